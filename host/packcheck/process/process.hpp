// One process for one piece of work on a pack, and what became of it.
#pragma once

#include <functional>
#include <string>

#include "host/packcheck/process/channel.hpp"

namespace packcheck {

// How a process came to its end.
struct End {
  enum { done, crashed, hung, exited } how;
  int status;          // The signal, or the exit status.
  int call;            // The call in hand; -1 if none.
  std::string doing;   // The call, or the step, in words.
  bool inside;         // Whether the pack was running.
  std::string detail;  // Where the address that was touched lies, in words; may be empty.
};

// Runs `work` in a child process that it can end in any way. `receive` gets what it sends.
// A call that uses more than `time_limit` seconds of processor time, or many times that on the
// clock, is taken to hang.
End run_in_process(const std::function<void(Channel&)>& work,
                   const std::function<void(const Message&)>& receive, double time_limit);

}  // namespace packcheck
