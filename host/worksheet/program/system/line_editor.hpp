// Lines typed at a terminal, and what helps to type them: line_editor_posix.cpp has an editor with
// completion and a history that lasts, line_editor_windows.cpp what the console has.
#pragma once

#include <memory>
#include <optional>
#include <string>

namespace worksheet {

class Machine;

// There is one at a time.
class LineEditor {
 public:
  // Its words are those of the machine.
  explicit LineEditor(Machine& machine);
  ~LineEditor();
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  struct Line {
    std::string text;
    bool given_up;  // By Ctrl-C.
  };
  // Asks for a line, the next one of a statement of which the lines `before` were typed. Nothing at
  // the end of input.
  std::optional<Line> next_line(const char* prompt, const std::string& before);

  // Keeps what was typed for the history.
  void remember(const std::string& lines);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace worksheet
