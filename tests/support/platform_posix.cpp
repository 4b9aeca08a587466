#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <fstream>

#include "tests/support/platform.hpp"

std::vector<int> test::crash_signals() {
  return {SIGSEGV, SIGBUS, SIGABRT};
}

long long test::resident_bytes() {
  long pages = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

bool test::run_on_stack(std::size_t bytes, void (*body)()) {
  pthread_attr_t attributes;
  pthread_t thread;
  static void (*running)();
  running = body;
  const auto run = [](void*) -> void* {
    running();
    return nullptr;
  };
  const bool done = pthread_attr_init(&attributes) == 0 &&
                    pthread_attr_setstacksize(
                        &attributes, std::max<std::size_t>(bytes, PTHREAD_STACK_MIN)) == 0 &&
                    pthread_create(&thread, &attributes, run, nullptr) == 0 &&
                    pthread_join(thread, nullptr) == 0;
  pthread_attr_destroy(&attributes);
  return done;
}
