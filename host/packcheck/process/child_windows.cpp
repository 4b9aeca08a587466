#include <windows.h>
// After it.
#include <fcntl.h>
#include <fmt/format.h>
#include <io.h>

#include <cstdlib>
#include <stdexcept>

#include "host/efiutils/fault_translation.hpp"
#include "host/efiutils/system/platform.hpp"
#include "host/efiutils/system/wide_text_windows.hpp"
#include "host/packcheck/memory/heap.hpp"
#include "host/packcheck/memory/operator_new.hpp"
#include "host/packcheck/process/child.hpp"

namespace packcheck {

namespace {

// The first argument of such a process; the handles of the page and of the pipe follow. The task
// comes through standard input.
constexpr const char* kAsChild = "--as-child-process";

// Reasons of the system's to end a process are larger.
constexpr DWORD kLeastReason = 0x80000000u;

// --- In the child ---

Progress* crash_progress = nullptr;

// Notes where the address lies.
LONG CALLBACK on_refused_address(EXCEPTION_POINTERS* exception) {
  const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
  if (record.ExceptionCode == STATUS_ACCESS_VIOLATION && record.NumberParameters > 1) {
    crash_progress->faulted = true;
    crash_progress->place =
        heap::locate(reinterpret_cast<const void*>(record.ExceptionInformation[1]));
    TerminateProcess(GetCurrentProcess(), record.ExceptionCode);
  }
  return EXCEPTION_CONTINUE_SEARCH;
}

// No debugger and no window, whatever the user has for programs that crash.
LONG CALLBACK on_crash(EXCEPTION_POINTERS* exception) {
  TerminateProcess(GetCurrentProcess(), exception->ExceptionRecord->ExceptionCode);
  return EXCEPTION_EXECUTE_HANDLER;
}

void watch_for_crashes(Progress* progress) {
  crash_progress = progress;
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  SetUnhandledExceptionFilter(on_crash);
  constexpr ULONG kFirst = 1;
  AddVectoredExceptionHandler(kFirst, on_refused_address);
}

void be_silent() {
  const int nowhere = _open("NUL", O_RDWR | O_BINARY);
  for (int stream = 0; stream <= 2; ++stream) _dup2(nowhere, stream);
  if (nowhere > 2) _close(nowhere);
}

HANDLE handle_of(const std::string& number) {
  return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(std::stoull(number)));
}

// --- In the parent ---

// A pipe to a child's standard input.
struct Input {
  HANDLE reading = nullptr, writing = nullptr;
};

Input new_input() {
  Input input;
  SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
  if (CreatePipe(&input.reading, &input.writing, &inherited, 0) == 0)
    throw std::runtime_error("a pipe: " + efi::last_error_words());
  SetHandleInformation(input.writing, HANDLE_FLAG_INHERIT, 0);
  return input;
}

// A busy system may refuse a process that it begins a moment later.
bool begin(const std::wstring& program, std::wstring& command, STARTUPINFOW& start,
           PROCESS_INFORMATION& process) {
  constexpr int kAttempts = 5;
  constexpr DWORD kPause = 200;
  for (int attempt = 1;; ++attempt) {
    if (CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &start, &process) != 0)
      return true;
    if (attempt == kAttempts) return false;
    Sleep(kPause);
  }
}

}  // namespace

const char* const kLeftOut =
    "blocks of malloc, allocations of malloc that fail, signal masks, and whether numFuncs fits "
    "theEfi";

struct Child::Process {
  HANDLE process;
  HANDLE job;  // It ends with its parent.
};

Child::Child(Channel& channel, const std::string& task, Perform) {
  const Input input = new_input();
  std::wstring command = efi::wide(fmt::format(
      "packcheck {} {} {}", kAsChild, reinterpret_cast<std::uintptr_t>(channel.page_handle()),
      static_cast<std::uintptr_t>(_get_osfhandle(channel.writing_descriptor()))));
  STARTUPINFOW start = {};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = input.reading;
  // The C library drops what is written to streams that were not there at the start.
  SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
  const HANDLE nowhere = CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     &inherited, OPEN_EXISTING, 0, nullptr);
  start.hStdOutput = start.hStdError = nowhere;
  PROCESS_INFORMATION process = {};
  const std::wstring program = efi::system_path(efi::program_path());
  const bool begun = begin(program, command, start, process);
  const std::string reason = begun ? "" : efi::last_error_words();
  CloseHandle(input.reading);
  CloseHandle(nowhere);
  const efi::Descriptor to_child(
      _open_osfhandle(reinterpret_cast<std::intptr_t>(input.writing), O_BINARY));
  if (!begun) throw std::runtime_error("a process: " + reason);
  process_ = new Process{process.hProcess, CreateJobObjectW(nullptr, nullptr)};
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  SetInformationJobObject(process_->job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
  AssignProcessToJobObject(process_->job, process.hProcess);
  CloseHandle(process.hThread);
  channel.become_reader();
  efi::write_all(to_child.get(), task);
}

Child::~Child() {
  CloseHandle(process_->process);
  CloseHandle(process_->job);
  delete process_;
}

bool Child::has_ended() {
  if (WaitForSingleObject(process_->process, 0) == WAIT_TIMEOUT) return false;
  DWORD status = 0;
  GetExitCodeProcess(process_->process, &status);
  crashed_ = status >= kLeastReason;
  status_ = static_cast<int>(status);
  return true;
}

void Child::kill() {
  TerminateProcess(process_->process, 1);
}

double Child::processor_seconds() const {
  FILETIME begun, ended, kernel, user;
  if (GetProcessTimes(process_->process, &begun, &ended, &kernel, &user) == 0) return 0.0;
  constexpr double kHigh = 4294967296.0, kUnit = 1e-7;
  const auto seconds = [](const FILETIME& time) {
    return (kHigh * time.dwHighDateTime + time.dwLowDateTime) * kUnit;
  };
  return seconds(kernel) + seconds(user);
}

std::string crash_words(int status) {
  switch (static_cast<DWORD>(status)) {
    case STATUS_ACCESS_VIOLATION:
      return "access violation";
    case STATUS_STACK_OVERFLOW:
      return "stack overflow";
    case STATUS_ILLEGAL_INSTRUCTION:
      return "illegal instruction";
    case STATUS_HEAP_CORRUPTION:
      return "heap corruption";
    default:
      return fmt::format("status {:#x}", static_cast<DWORD>(status));
  }
}

std::optional<int> run_as_child(int argc, char** argv, Perform perform) {
  const std::vector<std::string> words = efi::program_arguments(argc, argv);
  constexpr std::size_t kWords = 4;
  if (words.size() != kWords || words[1] != kAsChild) return std::nullopt;
  std::string task;
  _setmode(0, O_BINARY);
  efi::read_all(0, task);
  Channel channel(handle_of(words[2]), handle_of(words[3]));
  channel.become_writer();
  be_silent();
  efi::install_fault_translation();
  watch_for_crashes(channel.progress);
  try {
    share_operator_new();
    perform(task, channel);
  } catch (const std::exception& error) {
    channel.send({.kind = Message::failed, .text = error.what()});
  }
  TerminateProcess(GetCurrentProcess(), kDone);
  return kDone;
}

}  // namespace packcheck
