// The Matrix Market exchange format: array and coordinate; real, integer, complex and pattern;
// general, symmetric, skew-symmetric and Hermitian.
#include <algorithm>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <vector>

#include "fmt/format.h"
#include "host/text/numbers.hpp"
#include "host/text/text.hpp"
#include "host/units/unit.hpp"
#include "host/worksheet/data/data_file.hpp"
#include "host/worksheet/engine/limits.hpp"

namespace worksheet {

namespace {

using Words = std::vector<std::string_view>;

// A sparse matrix becomes a full one: the elements that a file without entries may ask for, and
// those that each entry may bring with it.
constexpr std::ptrdiff_t kMostEmpty = 1 << 25;
constexpr std::ptrdiff_t kMostPerEntry = 1 << 14;

enum class Field { real, complex, pattern, integer, unsigned_integer };

struct Header {
  bool coordinate;
  Field field;
  bool mirrored;    // Only one triangle is given.
  bool negated;     // The other one has the opposite sign...
  bool conjugated;  // ... or the opposite imaginary parts.
};

std::string lower_case(std::string_view word) {
  std::string text(word);
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

Field field_of(const std::string& word) {
  if (word == "complex") return Field::complex;
  if (word == "pattern") return Field::pattern;
  if (word == "integer") return Field::integer;
  return word == "unsigned-integer" ? Field::unsigned_integer : Field::real;
}

Header read_header(const DataFile& file, std::string_view banner) {
  std::vector<std::string> words;
  for (const std::string_view word : words_of(banner)) words.push_back(lower_case(word));
  if (words.size() != 5 || words[0] != "%%matrixmarket" || words[1] != "matrix")
    file.fail("the first line is not that of a Matrix Market matrix");
  auto choice = [&](std::size_t k, std::initializer_list<const char*> known) {
    if (std::find(known.begin(), known.end(), words[k]) == known.end())
      file.fail(fmt::format("\"{}\" is not known here", excerpt(words[k])));
  };
  choice(2, {"array", "coordinate"});
  choice(3, {"real", "double", "integer", "unsigned-integer", "complex", "pattern"});
  choice(4, {"general", "symmetric", "skew-symmetric", "hermitian"});
  const Header header = {words[2] == "coordinate", field_of(words[3]), words[4] != "general",
                         words[4] == "skew-symmetric", words[4] == "hermitian"};
  if (header.field == Field::pattern && !header.coordinate)
    file.fail("an array cannot be a pattern");
  return header;
}

// The words of the next line that is neither blank nor a comment; none at the end of the file.
// Comments go to `comment`, if there is one.
Words next_words(DataFile& file, std::string* comment = nullptr) {
  while (const std::string_view* line = file.next_line()) {
    Words words = words_of(*line);
    if (!words.empty() && words[0].front() != '%') return words;
    if (comment != nullptr && line->starts_with(kUnitComment)) *comment = *line;
  }
  return {};
}

std::ptrdiff_t whole_number(const DataFile& file, std::string_view word) {
  std::ptrdiff_t n = 0;
  if (word.starts_with('+')) word.remove_prefix(1);
  const auto result = std::from_chars(word.data(), word.data() + word.size(), n);
  if (result.ec != std::errc() || result.ptr != word.data() + word.size() || n < 0)
    file.fail(fmt::format("\"{}\" is not a count", excerpt(word)));
  return n;
}

double real_number(const DataFile& file, std::string_view word) {
  const auto x = parse_real(word);
  if (!x) file.fail(fmt::format("\"{}\" is not a number", excerpt(word)));
  return *x;
}

double integer(const DataFile& file, std::string_view word, bool with_sign) {
  std::string_view digits = word;
  if (digits.starts_with('+') || (with_sign && digits.starts_with('-'))) digits.remove_prefix(1);
  if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos)
    file.fail(fmt::format("\"{}\" is not a whole number{}", excerpt(word),
                          with_sign ? "" : " without a sign"));
  return real_number(file, word);
}

// The value that stands in the words from `first` on, which are as many as they should be.
Number value_in(const DataFile& file, Field field, const Words& words, std::size_t first) {
  const std::size_t wanted = first + (field == Field::pattern   ? 0
                                      : field == Field::complex ? 2
                                                                : 1);
  if (words.empty()) file.fail("the file ends before the last entry");
  if (words.size() != wanted)
    file.fail(fmt::format("{} words where {} are due", words.size(), wanted));
  switch (field) {
    case Field::pattern:
      return 1.0;
    case Field::complex:
      return {real_number(file, words[first]), real_number(file, words[first + 1])};
    case Field::integer:
    case Field::unsigned_integer:
      return integer(file, words[first], field == Field::integer);
    default:
      return real_number(file, words[first]);
  }
}

Number mirror_image(const Header& header, const Number& z) {
  if (header.negated) return -z;
  return header.conjugated ? std::conj(z) : z;
}

// The size of the matrix, and how many entries the file has for it.
struct Size {
  std::ptrdiff_t rows, cols, entries;
};

// Storage stays in proportion to what is read: a few bytes must not ask for all the memory there
// is.
void check_size(const DataFile& file, const Header& header, const Size& size) {
  constexpr std::ptrdiff_t kMostElements =
      std::numeric_limits<std::uint32_t>::max() / sizeof(double);
  if (size.rows < 1 || size.cols < 1) file.fail("the matrix has no elements");
  if (size.rows > kMostElements / size.cols)
    file.fail(fmt::format("{} x {} elements are too many: a matrix holds at most {}", size.rows,
                          size.cols, kMostElements));
  if (header.mirrored && size.rows != size.cols) file.fail("a matrix of this kind must be square");
  const std::ptrdiff_t elements = size.rows * size.cols;
  const std::ptrdiff_t least = header.coordinate ? size.entries
                               : header.mirrored ? (elements - size.rows) / 2
                                                 : elements;
  if (least > static_cast<std::ptrdiff_t>(file.content().size()))
    file.fail("the file is too short for that many entries");
  if (header.coordinate && (elements - kMostEmpty) / kMostPerEntry > size.entries)
    file.fail(fmt::format("{} x {} elements are out of proportion to {}", size.rows, size.cols,
                          counted(size.entries, "entry")));
}

// Comments before the size may name the unit of the numbers.
Size read_size(DataFile& file, const Header& header, std::string* unit) {
  const Words words = next_words(file, unit);
  if (words.size() != (header.coordinate ? 3u : 2u)) file.fail("expected the matrix's size");
  const Size size = {whole_number(file, words[0]), whole_number(file, words[1]),
                     header.coordinate ? whole_number(file, words[2]) : 0};
  check_size(file, header, size);
  return size;
}

void read_array(DataFile& file, const Header& header, MatrixBuilder& matrix) {
  const std::ptrdiff_t n = matrix.rows();
  for (std::ptrdiff_t j = 0; j < matrix.cols(); ++j) {
    const std::ptrdiff_t first = !header.mirrored ? 0 : header.negated ? j + 1 : j;
    for (std::ptrdiff_t i = first; i < n; ++i) {
      const Number z = value_in(file, header.field, next_words(file), 0);
      matrix.set(j * n + i, z);
      if (header.mirrored && i != j) matrix.set(i * n + j, mirror_image(header, z));
    }
  }
}

// Entries for the same element add up.
void read_coordinates(DataFile& file, const Header& header, std::ptrdiff_t count,
                      MatrixBuilder& matrix) {
  const std::ptrdiff_t n = matrix.rows();
  auto add = [&](std::ptrdiff_t k, const Number& z) { matrix.set(k, matrix.get(k) + z); };
  for (std::ptrdiff_t entry = 0; entry < count; ++entry) {
    const Words words = next_words(file);
    const Number z = value_in(file, header.field, words, 2);
    const std::ptrdiff_t i = whole_number(file, words[0]) - 1;
    const std::ptrdiff_t j = whole_number(file, words[1]) - 1;
    if (i < 0 || i >= n || j < 0 || j >= matrix.cols())
      file.fail(fmt::format("element ({}, {}) lies outside of the matrix", i + 1, j + 1));
    add(j * n + i, z);
    if (header.mirrored && i != j) add(i * n + j, mirror_image(header, z));
  }
}

// The unit that the comment names; text that is none is left alone.
const Unit* unit_of_comment(std::string_view comment) {
  if (comment.empty() || comment.size() > kUnitLimit.most) return nullptr;
  try {
    return parse_unit(trimmed(comment.substr(kUnitComment.size())));
  } catch (const std::runtime_error&) {
    return nullptr;
  }
}

}  // namespace

DataMatrix read_matrix_market(DataFile& file) {
  const Header header = read_header(file, *file.next_line());
  std::string unit;
  const Size size = read_size(file, header, &unit);
  MatrixBuilder matrix(size.rows, size.cols);
  if (header.field == Field::complex) matrix.need_im();
  if (header.coordinate)
    read_coordinates(file, header, size.entries, matrix);
  else
    read_array(file, header, matrix);
  if (!next_words(file).empty()) file.fail("text behind the last entry");
  return {std::move(matrix), unit_of_comment(unit)};
}

}  // namespace worksheet
