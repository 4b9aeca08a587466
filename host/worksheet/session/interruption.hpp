// Ctrl-C, and the time that a statement may take.
#pragma once

namespace worksheet {

class Machine;

// From now on SIGINT ends the evaluation that is under way: at the next call of a function, in a
// pack's function as soon as that can be left. Where the end takes a moment, the user is told, and
// another SIGINT ends the program with status 130. Calls into the system are not resumed: who waits
// for a key or a pipe notices. Of the machines of a process one can be interrupted.
void let_interrupt(Machine& machine);

// While it lives, what the machine does may take its `seconds_allowed`, if that is not 0: then it
// is stopped as by SIGINT. A pack's function that cannot be left for kGrace seconds more ends the
// program with status 2. For a machine that can be interrupted.
class TimeLimit {
 public:
  static constexpr int kGrace = 5;

  explicit TimeLimit(Machine& machine);
  ~TimeLimit();
  TimeLimit(const TimeLimit&) = delete;
  TimeLimit& operator=(const TimeLimit&) = delete;

 private:
  Machine& machine_;
};

}  // namespace worksheet
