#include <windows.h>
// After it.
#include <fmt/format.h>
#include <io.h>
#include <tlhelp32.h>

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

int count_threads() {
  const HANDLE list = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 thread = {};
  thread.dwSize = sizeof thread;
  int count = 0;
  for (BOOL more = Thread32First(list, &thread); more != 0; more = Thread32Next(list, &thread))
    if (thread.th32OwnerProcessID == GetCurrentProcessId()) ++count;
  CloseHandle(list);
  return count;
}

}  // namespace

Environment environment() {
  std::error_code ignored;
  Environment now;
  now.fp = fp_state();
  now.things = {{"the C locale", std::setlocale(LC_ALL, nullptr)},
                {"the C++ locale", std::locale().name()},
                {"the thread's locale", fmt::format("{}", GetThreadLocale())},
                {"the working directory", efi::utf8_of(fs::current_path(ignored))},
                {"the number of threads", fmt::format("{}", count_threads())},
                {"the error mode", fmt::format("{:#x}", GetErrorMode())}};
  add_signals(now.things);
  add_variables(now.things);
  add_descriptors(now.things);
  return now;
}

}  // namespace packcheck
