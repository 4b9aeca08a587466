#include <signal.h>

#include "tests/packs/broken_packs/platform.hpp"

const int kSomeSignal = SIGUSR1;
const char* const kSomeLocale = "C.UTF-8";

void block_signal() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, kSomeSignal);
  sigprocmask(SIG_BLOCK, &set, nullptr);
}

void crash() {
  raise(SIGSEGV);
}
