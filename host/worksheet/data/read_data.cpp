#include "host/worksheet/data/read_data.hpp"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fmt/format.h"
#include "host/worksheet/data/data_file.hpp"

namespace worksheet {

DataFile::DataFile(const std::string& path) : path_(path) {
  // A device such as /dev/zero may have no end.
  std::error_code ignored;
  std::ifstream file(path, std::ios::binary);
  if (!file || std::filesystem::is_directory(path, ignored) ||
      std::filesystem::is_character_file(path, ignored))
    throw DataError(fmt::format("{}: cannot be read", path));
  content_.assign(std::istreambuf_iterator<char>(file), {});
}

const std::string_view* DataFile::next_line() {
  if (at_ >= content_.size()) return nullptr;
  const std::size_t end = std::min(content_.find('\n', at_), content_.size());
  line_ = std::string_view(content_).substr(at_, end - at_);
  at_ = end + 1;
  ++number_;
  return &line_;
}

void DataFile::fail(const std::string& what) const {
  throw DataError(fmt::format("{}, line {}: {}", path_, number_, what));
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

std::optional<double> parse_real(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  double value = 0.0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ptr != end || text.empty()) return std::nullopt;
  if (result.ec == std::errc::result_out_of_range) {
    // Too small for a double: zero. Too large: no number that can be had.
    const std::size_t exponent = text.find_first_of("eE");
    const bool small = exponent == std::string_view::npos
                           ? text.find('.') < 3
                           : text.substr(exponent + 1).starts_with('-');
    return small ? std::optional(0.0) : std::nullopt;
  }
  if (result.ec != std::errc()) return std::nullopt;
  return value;
}

std::optional<Number> parse_number(std::string_view text) {
  if (const auto real = parse_real(text)) return *real;
  if (text.empty() || (text.back() != 'i' && text.back() != 'j')) return std::nullopt;
  text.remove_suffix(1);
  if (const auto imaginary = parse_real(text)) return Number(0.0, *imaginary);
  // The sign between the parts: the last one that is not an exponent's.
  for (std::size_t at = text.size(); at-- > 1;) {
    if ((text[at] != '+' && text[at] != '-') || text[at - 1] == 'e' || text[at - 1] == 'E')
      continue;
    const auto re = parse_real(text.substr(0, at));
    const auto im = parse_real(text.substr(at));
    if (re && im) return Number(*re, *im);
  }
  return std::nullopt;
}

aMatrix* read_data(Machine& machine, const std::string& name) {
  const auto path = std::filesystem::path(machine.directory) / name;
  DataFile file(path.lexically_normal().string());
  const std::string_view* const first = file.next_line();
  if (first == nullptr) throw DataError(fmt::format("{}: the file is empty", path.string()));
  try {
    MatrixBuilder matrix =
        first->starts_with("%%") ? read_matrix_market(file, *first) : read_table(file, *first);
    return matrix.finish(machine.store);
  } catch (const std::bad_alloc&) {
    throw DataError(fmt::format("{}: not enough memory", path.string()));
  }
}

}  // namespace worksheet
