// Worksheet text, cut into statements.
//
// A statement ends with its line or with a ';', unless a bracket is open, or a block: then it goes
// on to the line that closes the bracket, or to the block's `end`. Comments are blanked, so that
// offsets in a statement's text are offsets in the worksheet. Text that is not UTF-8 and statements
// that are too long become sources with an objection. Time and memory are linear in the text,
// whatever its brackets.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/worksheet/values/source.hpp"

namespace worksheet {

class StatementReader {
 public:
  // The line on which the first text given begins.
  explicit StatementReader(int first_line = 1) : next_line_(first_line) {}

  // Takes the next line of the text, without its newline; gives the statements that it completes.
  // Of a line longer than kStatementLimit the beginning will do.
  std::vector<Source> add_line(std::string_view line);
  // Ends the text: gives what an open bracket or block has held back.
  std::vector<Source> finish();

  // The line that the next one given is.
  int next_line() const { return next_line_; }

  // Whether an open bracket or block waits for further lines: whether the statement is not
  // complete.
  bool pending() const { return !pieces_.empty(); }

 private:
  // A held stretch of a line, and what it does to the brackets around it.
  struct Piece {
    std::size_t begin = 0;    // In the held text,
    int line = 0;             // and where it stands.
    std::size_t column = 0;   // Bytes of the line before it.
    std::size_t unsound = 0;  // The place in it where it is no UTF-8; kNone if it is.
    std::size_t closes = 0;   // Brackets that earlier pieces opened,
    std::size_t opens = 0;    // and those left open for later ones.
  };

  bool is_complete() const { return brackets_.empty() && blocks_ == 0; }
  bool begins_statement(std::string_view line) const;
  std::size_t follow(std::string_view line, std::size_t at, Piece& piece);
  void follow_word(std::string_view line, std::size_t at, std::size_t length);
  void follow_bracket(char c, Piece& piece);
  static std::vector<std::size_t> ends_of(const std::vector<Piece>& pieces);
  void hold(Piece piece, std::string_view text);
  void give(bool complete, std::vector<Source>* done);
  void add(std::size_t first, std::size_t last, std::vector<Source>* done) const;

  int next_line_;
  std::string text_;           // What is held, its lines with newlines behind them.
  std::vector<Piece> pieces_;  // Those of a statement that is not complete.
  std::string brackets_;       // That are open in it, the innermost last,
  std::size_t blocks_ = 0;     // and the blocks around them.
  bool at_start_ = true;       // Of a statement: here a word may begin a block.
  bool undecided_ = false;     // In the brackets behind an `if`: a block's, or a call's.
  char last_ = '\0';           // The last character that is no blank.
  bool too_long_ = false;      // Then only the beginning of the statement is held.
};

}  // namespace worksheet
