// A data file: its content, read line by line, with complaints that name the line.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/efiutils/system/streams.hpp"
#include "host/worksheet/engine/matrices.hpp"
#include "host/worksheet/values/source.hpp"

namespace worksheet {

// Why a file gives no matrix, or takes none: names the file and, where there is one, the line.
struct DataError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// An argument of a call that makes no sense there.
struct WrongArgument : std::runtime_error {
  WrongArgument(Span where, const std::string& what) : std::runtime_error(what), span(where) {}
  Span span;
};

// Reading or writing was interrupted.
struct Stopped {};

class DataFile {
 public:
  // Throws DataError for content that is empty or in UTF-16. Reading ends where *interrupted is
  // set.
  DataFile(const std::string& path, std::string content, efi::StopFlag interrupted);

  const std::string& path() const { return path_; }
  // All of it, without a byte-order mark.
  std::string_view content() const { return content_; }

  // The next line, without its newline; null at the end. Throws Stopped.
  const std::string_view* next_line();

  // Throws Stopped once there was an interruption.
  void heed_interruption() const {
    if (*interrupted_) throw Stopped();
  }

  // Throws DataError at the line that was read last, at a certain line, or without one.
  [[noreturn]] void fail(const std::string& what) const { fail_at(number_, what); }
  [[noreturn]] void fail_at(int line, const std::string& what) const;
  [[noreturn]] void fail_whole(const std::string& what) const;

 private:
  std::string path_;
  std::string content_;
  efi::StopFlag interrupted_;
  std::size_t at_ = 0;
  std::string_view line_;
  int number_ = 0;
};

// What a file holds: a matrix, its unit, and what its reader should know.
struct DataMatrix {
  MatrixBuilder matrix;
  const Unit* unit = nullptr;
  std::vector<std::string> notes = {};
};

// Text as a message may show it: short, on one line.
std::string excerpt(std::string_view text);

// The comment of a Matrix Market file in which the unit of the numbers stands. Other programs pass
// over it.
inline constexpr std::string_view kUnitComment = "% unit: ";

// A Matrix Market file, which begins with "%%". Throws DataError.
DataMatrix read_matrix_market(DataFile& file);

}  // namespace worksheet
