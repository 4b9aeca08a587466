// Tables of numbers in text files: CSV, TSV, columns apart by blanks.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/worksheet/data/data_file.hpp"
#include "host/worksheet/data/table_style.hpp"

namespace worksheet {

// The headings of the columns, as they stand in the file. Throws DataError, also where there are
// none.
std::vector<std::string> table_headings(const DataFile& file, const TableOptions& options);

// All columns of numbers, or the one with that heading: all of it, or its name without the unit.
// Columns of text are left out and noted. Throws DataError.
DataMatrix read_table(const DataFile& file, const TableOptions& options,
                      const std::optional<std::string>& column);

}  // namespace worksheet
