// A data file, read line by line, with complaints that name the line.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "host/worksheet/engine/matrices.hpp"

namespace worksheet {

class DataFile {
 public:
  DataFile(const std::string& path, std::string content)
      : path_(path), content_(std::move(content)) {}

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

// The contents of a file in the format, from its first line on. Throws DataError.
MatrixBuilder read_matrix_market(DataFile& file, std::string_view banner);
MatrixBuilder read_table(DataFile& file, std::string_view first_line);

}  // namespace worksheet
