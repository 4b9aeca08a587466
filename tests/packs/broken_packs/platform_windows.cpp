#include <csignal>

#include "tests/packs/broken_packs/platform.hpp"

const int kSomeSignal = SIGTERM;

// Nothing of that kind is there.
void block_signal() {}

void crash() {
  int* volatile nowhere = nullptr;
  *nowhere = 1;
}
