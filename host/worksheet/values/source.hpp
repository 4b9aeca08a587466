// The text of a statement, and places in it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct aError;

namespace worksheet {

// A stretch of a statement's text: offsets of its first byte and of the one behind its last.
struct Span {
  std::size_t begin = 0;
  std::size_t end = 0;
};

// The text of one statement and the place where it stands. Its comments are blanked, so that
// offsets in it are offsets in the worksheet.
struct Source {
  std::string text;
  std::string origin = {};  // The file or cell in which it stands; empty for the worksheet itself.
  int line = 1;             // The line on which it begins, counted from 1.
  std::size_t indent = 0;   // The bytes before it on that line.

  // Why this is not to be read as a statement, and where; empty for most.
  std::string objection = {};
  std::size_t objection_offset = 0;

  // The line and the column (in characters, counted from 1) of an offset.
  struct Position {
    int line;
    std::size_t column;
  };
  Position position(std::size_t offset) const;

  // "line 3", or "line 3 of file.ws".
  std::string line_words(int at_line) const;

  // The lines of the text without their newlines, as written.
  std::vector<std::string> lines() const;
};

// An earlier statement that failed; none without a line.
struct Failure {
  int line = 0;
  std::string words = {};  // "line 2"
};

// Where an error arose. Null where that is not known.
struct Place {
  const aError* error = nullptr;
  const Source* source = nullptr;
  Span span;
  Failure cause;  // Why it arose, if not by itself.
};

}  // namespace worksheet
