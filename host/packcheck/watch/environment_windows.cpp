#include <windows.h>
// After it.
#include <fmt/format.h>
#include <io.h>

#include <atomic>
#include <clocale>
#include <csignal>
#include <filesystem>
#include <locale>

#include "host/efiutils/system/paths.hpp"
#include "host/efiutils/system/wide_text_windows.hpp"
#include "host/packcheck/watch/environment.hpp"

namespace packcheck {

namespace {

namespace fs = std::filesystem;

using Things = std::map<std::string, std::string>;

void add_signals(Things& things) {
  for (const int number : {SIGABRT, SIGFPE, SIGILL, SIGINT, SIGSEGV, SIGTERM}) {
    const auto action = std::signal(number, SIG_DFL);
    std::signal(number, action);
    if (action != SIG_DFL)
      things[fmt::format("the action of signal {}", number)] =
          fmt::format("{:#x}", reinterpret_cast<std::uintptr_t>(action));
  }
}

void add_variables(Things& things) {
  wchar_t* const block = GetEnvironmentStringsW();
  for (const wchar_t* entry = block; *entry != 0; entry += std::wcslen(entry) + 1) {
    const std::string text = efi::narrow(entry);
    // The working directory of a drive is called "=C:".
    const std::size_t end = std::min(text.find('=', 1), text.size());
    things["the variable " + text.substr(0, end)] = text.substr(end);
  }
  FreeEnvironmentStringsW(block);
}

// Those of the C library.
void add_descriptors(Things& things) {
  for (int descriptor = 0; descriptor < kFirstOwnDescriptor; ++descriptor)
    if (_get_osfhandle(descriptor) != reinterpret_cast<std::intptr_t>(INVALID_HANDLE_VALUE))
      things[fmt::format("the descriptor {}", descriptor)] = "open";
}

// The system calls it in each thread that begins or ends. (To ask it for the threads that there are
// takes milliseconds.)
std::atomic<int> threads = 1;

void NTAPI on_thread(void*, DWORD reason, void*) {
  if (reason == DLL_THREAD_ATTACH) ++threads;
  if (reason == DLL_THREAD_DETACH) --threads;
}
[[gnu::section(".CRT$XLF"), gnu::used]] const PIMAGE_TLS_CALLBACK thread_callback = on_thread;

}  // namespace

Environment environment() {
  std::error_code ignored;
  Environment now;
  now.fp = fp_state();
  now.things = {{"the C locale", std::setlocale(LC_ALL, nullptr)},
                {"the C++ locale", std::locale().name()},
                {"the thread's locale", fmt::format("{}", GetThreadLocale())},
                {"the working directory", efi::utf8_of(fs::current_path(ignored))},
                {"the number of threads", fmt::format("{}", threads.load())},
                {"the error mode", fmt::format("{:#x}", GetErrorMode())}};
  add_signals(now.things);
  add_variables(now.things);
  add_descriptors(now.things);
  return now;
}

}  // namespace packcheck
