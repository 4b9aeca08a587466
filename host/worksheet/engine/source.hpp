// Worksheet text, cut into statements.
//
// A statement ends with its line, unless a bracket is open: then it goes on. Comments are blanked,
// so that offsets in a statement's text are offsets in the worksheet.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace worksheet {

// A stretch of a statement's text: offsets of its first byte and of the one behind its last.
struct Span {
  std::size_t begin = 0;
  std::size_t end = 0;
};

// The text of one statement and the place where it stands.
struct Source {
  std::string text;
  int line = 1;            // The line on which it begins, counted from 1.
  std::size_t indent = 0;  // The bytes before it on that line.

  // The line and the column (in characters, counted from 1) of an offset.
  struct Position {
    int line;
    std::size_t column;
  };
  Position position(std::size_t offset) const;

  // The lines of the text without their newlines, as written.
  std::vector<std::string> lines() const;
};

// The number of characters in UTF-8 text.
std::size_t character_count(std::string_view text);

// They one by one, fit to be shown: a tab as a blank, other control characters as question marks.
std::vector<std::string> characters(std::string_view text);

class StatementReader {
 public:
  // The line on which the first text given begins.
  explicit StatementReader(int first_line = 1) : next_line_(first_line) {}

  // Takes the next physical line, without its newline; gives the statements that it completes.
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
