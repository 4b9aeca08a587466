#include <csignal>

#include "tests/packs/broken_packs/platform.hpp"

const int kSomeSignal = SIGTERM;
const char* const kSomeLocale = "English_United States.1252";

// Nothing of that kind is there.
void block_signal() {}

void crash() {
  volatile int* volatile nowhere = nullptr;
  *nowhere = 1;
}
