#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdlib>
#include <stdexcept>

#include "host/efiutils/system/platform.hpp"
#include "host/worksheet/program/system/process.hpp"

namespace worksheet {

namespace {

HANDLE output() {
  return GetStdHandle(STD_OUTPUT_HANDLE);
}

UINT input_page = 0, output_page = 0;

void put_pages_back() {
  SetConsoleCP(input_page);
  SetConsoleOutputCP(output_page);
}

}  // namespace

void guard_standard_streams() {
  // What is read and written is UTF-8; the console is the user's again afterwards.
  input_page = GetConsoleCP();
  output_page = GetConsoleOutputCP();
  std::atexit(put_pages_back);
  SetConsoleCP(CP_UTF8);
  SetConsoleOutputCP(CP_UTF8);
  // A console ends lines itself. The C library would take each byte for a character.
  for (const int stream : {1, 2})
    if (efi::is_terminal(stream)) _setmode(stream, O_BINARY);
}

void limit_memory(std::uint64_t bytes) {
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limit = {};
  limit.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_PROCESS_MEMORY;
  limit.ProcessMemoryLimit = static_cast<SIZE_T>(bytes);
  const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  if (job == nullptr ||
      SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limit, sizeof limit) == 0 ||
      AssignProcessToJobObject(job, GetCurrentProcess()) == 0)
    throw std::runtime_error("--max-memory: the system sets no limit");
}

std::optional<int> terminal_width() {
  CONSOLE_SCREEN_BUFFER_INFO information;
  if (GetConsoleScreenBufferInfo(output(), &information) == 0) return std::nullopt;
  return information.srWindow.Right - information.srWindow.Left + 1;
}

bool terminal_takes_colour() {
  DWORD mode = 0;
  return GetConsoleMode(output(), &mode) != 0 &&
         SetConsoleMode(output(), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

}  // namespace worksheet
