// How a table is written down: its separator, its decimal sign, and whether its first line names
// the columns. What the call does not say is told by the file.
#pragma once

#include <optional>

#include "host/worksheet/data/table_cells.hpp"

namespace worksheet {

// What the call says.
struct TableOptions {
  std::optional<char> separator;
  std::optional<char> decimal;
  std::optional<bool> headings;
};

// Takes in a text such as "decimal: comma"; false if it is none of these. Throws
// std::invalid_argument where the word behind the colon is not known.
bool read_table_option(std::string_view text, TableOptions& options);

struct TableStyle {
  char separator;
  bool headings;
  bool row_names;     // The first column names the rows: its heading is blank, or is missing.
  std::size_t cells;  // In a line of the table; that of the headings may have one less.
};

// Throws DataError.
TableStyle style_of(const DataFile& file, const TableOptions& options);

// The sign before the decimals, '.' or ','. Throws DataError where the file does not tell.
char decimal_of(const DataFile& file, const TableStyle& style, const TableOptions& options);

}  // namespace worksheet
