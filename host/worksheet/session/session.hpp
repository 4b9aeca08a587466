// A worksheet under evaluation: statements in, outcomes out.
#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

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
  // `origin` is that of the sources.
  void run_text(std::istream& text, int first_line = 1, const std::string& origin = {});

  // How numbers are shown, until a statement says otherwise.
  void set_format(const NumberFormat& format) { format_ = format; }

  // Whether some statement gave an error.
  bool failed() const { return failed_; }

 private:
  void run_all(std::vector<Source> sources, const std::string& origin);
  Outcome outcome_of(const Source& source);
  void run_into(Outcome& outcome, const Source& source);
  Value change_format(std::string_view words);
  bool run_command(Outcome& outcome, const Source& source);
  void keep_answer(const Outcome& outcome, const Source& source);
  Value begin_include(const std::string& file);
  void run_included();
  void remember_failure(const Outcome& outcome);
  void evaluate_into(Outcome& outcome, const Source& source);

  Machine machine_;
  Show show_;
  std::optional<NumberFormat> format_;
  // A file that a statement includes, between its outcome and those of its statements.
  struct Included {
    std::string path, text;
    bool is_quiet = false;
  };
  std::optional<Included> included_;
  std::vector<std::string> including_;  // The files under way, the innermost last,
  std::size_t count_ = 0;               // and the number of all since there was none.
  bool quiet_ = false;                  // Whether one of them shows errors only.
  bool failed_ = false;
  int progress_ = -1;
};

}  // namespace worksheet
