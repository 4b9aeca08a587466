// A worksheet under evaluation: statements in, outcomes out.
#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/source.hpp"

namespace worksheet {

// What came of a statement.
struct Outcome {
  const Source* source = nullptr;
  int line = 0;                    // Of the statement, or of what is wrong with its form.
  std::vector<std::string> names;  // That it assigns or defines.
  Value value = {};                // A function value for a definition.
  bool is_definition = false;
  std::optional<std::string> help;  // The topic of a statement that asks for help, empty for all.
  std::string syntax_message;       // Empty unless the text is no statement...
  std::size_t column = 0;           // ... and then the place,
  std::size_t offset = 0;           // also as an offset in the statement's text.

  bool is_syntax_error() const { return !syntax_message.empty(); }
  bool failed() const { return is_syntax_error() || is_error(value); }
};

class Session {
 public:
  // `report` sees every outcome while its value lives.
  using Report = std::function<void(const Machine&, const Outcome&)>;
  explicit Session(Report report) : report_(std::move(report)) {}

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
  Outcome watched_outcome_of(const Source& source);

  Machine machine_;
  Report report_;
  bool failed_ = false;
  int progress_ = -1;
};

}  // namespace worksheet
