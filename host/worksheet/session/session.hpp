// A worksheet under evaluation: statements in, outcomes out.
#pragma once

#include <functional>
#include <iosfwd>

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/session/outcome.hpp"

namespace worksheet {

class Session {
 public:
  // `show` sees every outcome while its value lives. Where it throws std::bad_alloc it sees the
  // outcome once more, as an error.
  using Show = std::function<void(const Outcome&)>;
  explicit Session(Show show) : show_(std::move(show)) {}

  Machine& machine() { return machine_; }

  // From now on statements that take long are shown at the terminal behind this file descriptor.
  void show_progress(int descriptor) { progress_ = descriptor; }

  void run(const Source& source);

  // Runs text line by line: each statement as soon as it is complete. Stops after an interruption.
  void run_text(std::istream& text, int first_line = 1);

  // Whether some statement gave an error.
  bool failed() const { return failed_; }

 private:
  Outcome outcome_of(const Source& source);
  void run_into(Outcome& outcome, const Source& source);
  void remember_failure(const Outcome& outcome);
  void evaluate_into(Outcome& outcome, const Source& source);

  Machine machine_;
  Show show_;
  bool failed_ = false;
  int progress_ = -1;
};

}  // namespace worksheet
