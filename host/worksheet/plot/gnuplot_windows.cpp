#include <windows.h>

#include <string>

#include "fmt/format.h"
#include "host/efiutils/system/files.hpp"
#include "host/efiutils/system/wide_text_windows.hpp"
#include "host/worksheet/plot/gnuplot.hpp"

namespace worksheet {

namespace {

constexpr const char* kMissing =
    "there is no gnuplot to draw with: install it so that gnuplot.exe is found in PATH";

// The longest wait before the flag of an interruption is looked at again.
constexpr DWORD kLongestWait = 100;  // Milliseconds.

[[noreturn]] void fail_to_start() {
  throw PlotError(fmt::format("gnuplot cannot be started: {}", efi::last_error_words()));
}

class Handle {
 public:
  explicit Handle(HANDLE handle) : handle_(handle) {}
  ~Handle() { CloseHandle(handle_); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  HANDLE get() const { return handle_; }

 private:
  HANDLE handle_;
};

// A file of no name that anybody needs: it goes with its last handle. A child may have it.
HANDLE new_file() {
  SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
  const HANDLE file =
      CreateFileW(efi::system_path(efi::temporary_path("")).c_str(), GENERIC_READ | GENERIC_WRITE,
                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherited, CREATE_NEW,
                  FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  if (file == INVALID_HANDLE_VALUE) fail_to_start();
  return file;
}

void go_to_start(HANDLE file) {
  SetFilePointer(file, 0, nullptr, FILE_BEGIN);
}

std::string content_of(HANDLE file) {
  go_to_start(file);
  std::string content;
  char piece[1 << 14];
  for (DWORD count = 0; ReadFile(file, piece, sizeof piece, &count, nullptr) != 0 && count != 0;)
    content.append(piece, count);
  return content;
}

// A running gnuplot, which ends with this object and with this program.
class Child {
 public:
  Child(HANDLE input, HANDLE output, HANDLE errors) : job_(CreateJobObjectW(nullptr, nullptr)) {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job_.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = input;
    start.hStdOutput = output;
    start.hStdError = errors;
    wchar_t command[] = L"gnuplot.exe --default-settings -";
    if (CreateProcessW(nullptr, command, nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr, nullptr,
                       &start, &process_) == 0) {
      if (GetLastError() == ERROR_FILE_NOT_FOUND) throw PlotError(kMissing);
      fail_to_start();
    }
    AssignProcessToJobObject(job_.get(), process_.hProcess);
  }
  ~Child() {
    TerminateProcess(process_.hProcess, 1);
    CloseHandle(process_.hThread);
    CloseHandle(process_.hProcess);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  // Its status, once it has ended.
  DWORD wait(efi::StopFlag interrupted) {
    while (WaitForSingleObject(process_.hProcess, kLongestWait) == WAIT_TIMEOUT)
      if (*interrupted) throw PlotError("interrupted");
    DWORD status = 0;
    GetExitCodeProcess(process_.hProcess, &status);
    return status;
  }

 private:
  Handle job_;
  PROCESS_INFORMATION process_ = {};
};

// The last line of what gnuplot complains of: the reason why it stopped.
std::string complaint(HANDLE file) {
  std::string text = content_of(file);
  const std::size_t end = text.find_last_not_of(" \r\n");
  if (end == std::string::npos) return "it failed";
  text.resize(end + 1);
  text.erase(0, text.rfind('\n') + 1);
  text.erase(0, text.find_first_not_of(' '));
  return text;
}

}  // namespace

std::string run_gnuplot(const std::string& script, efi::StopFlag interrupted) {
  const Handle input(new_file()), output(new_file()), errors(new_file());
  DWORD written = 0;
  if (WriteFile(input.get(), script.data(), static_cast<DWORD>(script.size()), &written, nullptr) ==
          0 ||
      written != script.size())
    fail_to_start();
  go_to_start(input.get());
  Child child(input.get(), output.get(), errors.get());
  const DWORD status = child.wait(interrupted);
  if (*interrupted) throw PlotError("interrupted");
  if (status != 0) throw PlotError("gnuplot: " + complaint(errors.get()));
  std::string content = content_of(output.get());
  // It ends lines of text as the system does.
  if (content.starts_with("<?xml")) std::erase(content, '\r');
  return content;
}

}  // namespace worksheet
