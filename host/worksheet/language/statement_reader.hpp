// Worksheet text, cut into statements.
//
// A statement ends with its line, unless a bracket is open: then it goes on. Comments are blanked,
// so that offsets in a statement's text are offsets in the worksheet.
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
  std::vector<Source> add_line(std::string_view line);
  // Ends the text: gives what an unclosed bracket has held back.
  std::vector<Source> finish();

  // Whether an open bracket waits for further lines.
  bool pending() const { return !held_.empty(); }

 private:
  struct Line {
    std::string text;
    int number;
  };

  void scan(Line line, std::vector<Source>* done);
  void give_up(std::vector<Source>* done);

  int next_line_;
  std::vector<Line> held_;  // The lines of a statement with an open bracket.
  int depth_ = 0;
};

}  // namespace worksheet
