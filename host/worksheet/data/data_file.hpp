// A data file under the reading eye: its lines, and complaints that name the place.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/worksheet/engine/matrices.hpp"

namespace worksheet {

class DataFile {
 public:
  // Throws DataError when the file cannot be read.
  explicit DataFile(const std::string& path);

  // The next line, without its newline; null at the end.
  const std::string_view* next_line();
  [[noreturn]] void fail(const std::string& what) const;

 private:
  std::string path_;
  std::string content_;
  std::size_t at_ = 0;
  std::string_view line_;
  int number_ = 0;
};

std::string_view trimmed(std::string_view text);

// A decimal number, "inf" or "nan", with or without sign, whatever the locale; nothing else.
std::optional<double> parse_real(std::string_view text);
// The same, or "2i", "1+2i", "1-2j".
std::optional<Number> parse_number(std::string_view text);

// The contents of a file in the format, from its first line on. Throws DataError.
MatrixBuilder read_matrix_market(DataFile& file, std::string_view banner);
MatrixBuilder read_table(DataFile& file, std::string_view first_line);

}  // namespace worksheet
