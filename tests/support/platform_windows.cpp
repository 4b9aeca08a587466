#include <windows.h>

#include "tests/support/platform.hpp"
// After it.
#include <psapi.h>

#include <csignal>

std::vector<int> test::crash_signals() {
  return {SIGSEGV, SIGABRT};
}

long long test::resident_bytes() {
  PROCESS_MEMORY_COUNTERS counters = {};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return static_cast<long long>(counters.PagefileUsage);
}

namespace {

void (*running)();

DWORD WINAPI run(void*) {
  running();
  return 0;
}

}  // namespace

bool test::run_on_stack(std::size_t bytes, void (*body)()) {
  running = body;
  const HANDLE thread =
      CreateThread(nullptr, bytes, run, nullptr, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
  if (thread == nullptr) return false;
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  return true;
}
