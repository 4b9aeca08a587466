// Signals of a kernel: Ctrl-C reaches it while a cell is evaluated and at no other time.
#pragma once

#include "host/worksheet/engine/machine.hpp"

namespace worksheet_kernel {

// Keeps SIGINT and SIGALRM from this thread and those that it starts from now on. To be called
// before any other thread begins: what waits for messages does not stand a signal.
void hold_signals();

// While it lives, they come through to this thread, but for an interruption that came before.
class SignalsLetIn {
 public:
  explicit SignalsLetIn(worksheet::Machine& machine);
  ~SignalsLetIn();
  SignalsLetIn(const SignalsLetIn&) = delete;
  SignalsLetIn& operator=(const SignalsLetIn&) = delete;

 private:
  worksheet::Machine& machine_;
};

// Ends the process when its parent ends, however that happens.
void end_with_parent();

}  // namespace worksheet_kernel
