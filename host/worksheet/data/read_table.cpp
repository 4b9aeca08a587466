// Tables of numbers: one row a line, the fields apart by tabs, commas or semicolons.
#include <vector>

#include "fmt/format.h"
#include "host/text/numbers.hpp"
#include "host/text/text.hpp"
#include "host/worksheet/data/data_file.hpp"

namespace worksheet {

namespace {

char separator_of(std::string_view line) {
  for (const char c : {'\t', ',', ';'})
    if (line.find(c) != std::string_view::npos) return c;
  return ',';
}

// A field without surrounding blanks and quotation marks.
std::string_view bare(std::string_view field) {
  field = trimmed(field);
  if (field.size() >= 2 && field.front() == '"' && field.back() == '"')
    field = trimmed(field.substr(1, field.size() - 2));
  return field;
}

std::vector<std::string_view> fields_of(std::string_view line, char separator) {
  std::vector<std::string_view> fields;
  for (;;) {
    const std::size_t end = line.find(separator);
    fields.push_back(bare(line.substr(0, end)));
    if (end == std::string_view::npos) return fields;
    line.remove_prefix(end + 1);
  }
}

bool is_blank(std::string_view line) {
  line = trimmed(line);
  return line.empty() || line.front() == '#';
}

// Whether a first line names the columns: no field of it is a number.
bool is_heading(const std::vector<std::string_view>& fields) {
  for (const std::string_view field : fields)
    if (field.empty() || parse_number(field)) return false;
  return true;
}

}  // namespace

MatrixBuilder read_table(DataFile& file, std::string_view line) {
  std::vector<Number> by_rows;
  std::size_t cols = 0, rows = 0;
  char separator = 0;
  if (line.starts_with("\xEF\xBB\xBF")) line.remove_prefix(3);
  for (const std::string_view* next = &line; next != nullptr; next = file.next_line()) {
    if (is_blank(*next)) continue;
    if (separator == 0) separator = separator_of(*next);
    const auto fields = fields_of(trimmed(*next), separator);
    if (cols == 0) {
      cols = fields.size();
      if (is_heading(fields)) continue;
    }
    if (fields.size() != cols)
      file.fail(fmt::format("{} fields where {} are due", fields.size(), cols));
    for (const std::string_view field : fields) {
      const auto z = parse_number(field);
      if (!z) file.fail(fmt::format("\"{}\" is not a number", field));
      by_rows.push_back(*z);
    }
    ++rows;
  }
  if (rows == 0) file.fail("the file ends without a row of numbers");
  MatrixBuilder matrix(static_cast<std::ptrdiff_t>(rows), static_cast<std::ptrdiff_t>(cols));
  for (std::size_t i = 0; i < rows; ++i)
    for (std::size_t j = 0; j < cols; ++j)
      matrix.set(static_cast<std::ptrdiff_t>(j * rows + i), by_rows[i * cols + j]);
  return matrix;
}

}  // namespace worksheet
