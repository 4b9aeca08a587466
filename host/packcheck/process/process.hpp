// One process for one piece of work on a pack, and what became of it.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "host/packcheck/process/child.hpp"

namespace packcheck {

// How a process came to its end.
struct End {
  enum { done, crashed, hung, late, exited } how;
  int status;          // The signal, or the exit status.
  int call;            // The call in hand; -1 if none.
  std::string doing;   // The call, or the step, in words.
  bool inside;         // Whether the pack was running.
  std::string detail;  // Where the address that was touched lies, in words; may be empty.
};

// How long a process may last.
struct TimeLimits {
  using Clock = std::chrono::steady_clock;
  double call;            // Seconds of processor time, or many times that on the clock.
  Clock::time_point end;  // Whatever the process does.
};

// Lets `perform` do a task in a child process that it can end in any way. `receive` gets what it
// sends. A call that takes too long is taken to hang; what lasts until the end of its time is late.
End run_in_process(const std::string& task, Perform perform,
                   const std::function<void(const Message&)>& receive, const TimeLimits& limits);

}  // namespace packcheck
