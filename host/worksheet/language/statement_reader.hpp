// Worksheet text, cut into statements.
//
// A statement ends with its line, unless a bracket is open: then it goes on. Comments are blanked,
// so that offsets in a statement's text are offsets in the worksheet. Text that is not UTF-8 and
// statements that are too long become sources with an objection. Time and memory are linear in the
// text, whatever its brackets.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/worksheet/engine/source.hpp"

namespace worksheet {

class StatementReader {
 public:
  // The line on which the first text given begins.
  explicit StatementReader(int first_line = 1) : next_line_(first_line) {}

  // Takes the next line of the text, without its newline; gives the statements that it completes.
  // Of a line longer than kStatementLimit the beginning will do.
  std::vector<Source> add_line(std::string_view line);
  // Ends the text: gives what an unclosed bracket has held back.
  std::vector<Source> finish();

  // The line that the next one given is.
  int next_line() const { return next_line_; }

  // Whether an open bracket waits for further lines.
  bool pending() const { return !lines_.empty(); }

 private:
  // A held line, and what it does to the brackets around it.
  struct Line {
    std::size_t begin = 0;          // In the held text.
    std::size_t unsound;            // The place in the line where it is no UTF-8, if it is none.
    std::size_t closes = 0;         // Brackets that earlier lines opened,
    std::size_t opens = 0;          // and those left open for later ones.
    bool begins_statement = false;  // An assignment outside of its own brackets.
  };

  static Line scan(std::string& text);
  static std::vector<std::size_t> ends_of(const std::vector<Line>& lines);
  void hold(Line line, std::string_view text);
  void give(bool complete, std::vector<Source>* done);
  void add(std::size_t first, std::size_t last, std::vector<Source>* done) const;

  int next_line_;
  int first_line_ = 0;       // Of what is held.
  std::string text_;         // What is held, its lines with newlines behind them.
  std::vector<Line> lines_;  // The lines of a statement with an open bracket.
  std::size_t depth_ = 0;    // Open brackets.
  bool too_long_ = false;    // Then only the beginning of the statement is held.
};

}  // namespace worksheet
