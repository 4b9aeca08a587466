#include "host/worksheet/session/interruption.hpp"

#include <csignal>

#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

namespace {

// What the signal handler reaches.
Machine* interruptible = nullptr;

void on_interrupt(int) {
  interruptible->interrupted = 1;
}

}  // namespace

void let_interrupt(Machine& machine) {
  interruptible = &machine;
  struct sigaction action = {};
  action.sa_handler = on_interrupt;
  sigaction(SIGINT, &action, nullptr);
}

}  // namespace worksheet
