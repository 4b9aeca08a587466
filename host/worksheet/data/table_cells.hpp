// The cells of a table in a text file, line by line.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "host/worksheet/data/data_file.hpp"

namespace worksheet {

// What stands for the separator where cells are apart by any number of blanks, and where a line is
// one cell.
inline constexpr char kBlanks = ' ';
inline constexpr char kNoSeparator = '\0';

struct Cell {
  std::string_view text;  // Without the blanks and the quotation marks around it.
  bool quoted;
};

// The separator that the first line of a file names, as spreadsheets do: "sep=;". Empty if none.
std::string_view separator_named_in(std::string_view line);

// Reads the lines of a table one after the other. Blank lines, those that begin with #, and
// a first one that names the separator are passed over. A cell in quotation marks may hold
// separators, newlines and, doubled, quotation marks.
class CellReader {
 public:
  CellReader(const DataFile& file, char separator)
      : file_(file), content_(file.content()), separator_(separator) {}

  // Goes to the next line of cells; false at the end. Throws DataError.
  bool next();

  // The cells of the line, which live until the next one, and the line on which it begins.
  const std::vector<Cell>& cells() const { return cells_; }
  int line() const { return line_; }

 private:
  bool skip_to_cells();
  void skip_blanks();
  void read_quoted();
  void read_bare();
  bool at_line_end() const { return at_ >= content_.size() || content_[at_] == '\n'; }

  const DataFile& file_;
  std::string_view content_;
  char separator_;
  std::size_t at_ = 0;
  int lines_ = 0;  // That are behind.
  int line_ = 0;
  std::vector<Cell> cells_;
  std::deque<std::string> unescaped_;
};

// Text of a cell as UTF-8 on one line. What is no UTF-8 is taken for Windows-1252, in which
// spreadsheets write.
std::string cell_text(std::string_view text);

}  // namespace worksheet
