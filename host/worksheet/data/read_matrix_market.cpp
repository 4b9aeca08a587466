// The Matrix Market exchange format: array and coordinate; real, integer, complex and pattern;
// general, symmetric, skew-symmetric and Hermitian.
#include <algorithm>
#include <charconv>
#include <vector>

#include "fmt/format.h"
#include "host/text/numbers.hpp"
#include "host/text/text.hpp"
#include "host/worksheet/data/data_file.hpp"

namespace worksheet {

namespace {

using Words = std::vector<std::string_view>;

struct Header {
  bool coordinate;
  bool complex;
  bool pattern;
  bool mirrored;    // Only one triangle is given.
  bool negated;     // The other one has the opposite sign...
  bool conjugated;  // ... or the opposite imaginary parts.
};

Words words_of(std::string_view line) {
  Words words;
  for (line = trimmed(line); !line.empty(); line = trimmed(line)) {
    const std::size_t end = std::min(line.find_first_of(" \t"), line.size());
    words.push_back(line.substr(0, end));
    line.remove_prefix(end);
  }
  return words;
}

std::string lower_case(std::string_view word) {
  std::string text(word);
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

Header read_header(const DataFile& file, std::string_view banner) {
  std::vector<std::string> words;
  for (const std::string_view word : words_of(banner)) words.push_back(lower_case(word));
  if (words.size() != 5 || words[0] != "%%matrixmarket" || words[1] != "matrix")
    file.fail("the first line is not that of a Matrix Market matrix");
  auto choice = [&](std::size_t k, std::initializer_list<const char*> known) {
    if (std::find(known.begin(), known.end(), words[k]) == known.end())
      file.fail(fmt::format("\"{}\" is not known here", words[k]));
  };
  choice(2, {"array", "coordinate"});
  choice(3, {"real", "double", "integer", "complex", "pattern"});
  choice(4, {"general", "symmetric", "skew-symmetric", "hermitian"});
  const Header header = {words[2] == "coordinate",     words[3] == "complex",
                         words[3] == "pattern",        words[4] != "general",
                         words[4] == "skew-symmetric", words[4] == "hermitian"};
  if (header.pattern && !header.coordinate) file.fail("an array cannot be a pattern");
  return header;
}

// The words of the next line that is neither blank nor a comment; none at the end of the file.
Words next_words(DataFile& file) {
  while (const std::string_view* line = file.next_line()) {
    Words words = words_of(*line);
    if (!words.empty() && words[0].front() != '%') return words;
  }
  return {};
}

std::ptrdiff_t whole_number(const DataFile& file, std::string_view word) {
  std::ptrdiff_t n = 0;
  const auto result = std::from_chars(word.data(), word.data() + word.size(), n);
  if (result.ec != std::errc() || result.ptr != word.data() + word.size() || n < 0)
    file.fail(fmt::format("\"{}\" is not a count", word));
  return n;
}

double real_number(const DataFile& file, std::string_view word) {
  const auto x = parse_real(word);
  if (!x) file.fail(fmt::format("\"{}\" is not a number", word));
  return *x;
}

// The value that stands in the words from `first` on, which are as many as they should be.
Number value_in(const DataFile& file, const Header& header, const Words& words, std::size_t first) {
  const std::size_t wanted = first + (header.pattern ? 0 : header.complex ? 2 : 1);
  if (words.empty()) file.fail("the file ends before the last entry");
  if (words.size() != wanted)
    file.fail(fmt::format("{} words where {} are due", words.size(), wanted));
  if (header.pattern) return 1.0;
  const double re = real_number(file, words[first]);
  return {re, header.complex ? real_number(file, words[first + 1]) : 0.0};
}

Number mirror_image(const Header& header, const Number& z) {
  if (header.negated) return -z;
  return header.conjugated ? std::conj(z) : z;
}

void read_array(DataFile& file, const Header& header, MatrixBuilder& matrix) {
  const std::ptrdiff_t n = matrix.rows();
  for (std::ptrdiff_t j = 0; j < matrix.cols(); ++j) {
    const std::ptrdiff_t first = !header.mirrored ? 0 : header.negated ? j + 1 : j;
    for (std::ptrdiff_t i = first; i < n; ++i) {
      const Number z = value_in(file, header, next_words(file), 0);
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
    const Number z = value_in(file, header, words, 2);
    const std::ptrdiff_t i = whole_number(file, words[0]) - 1;
    const std::ptrdiff_t j = whole_number(file, words[1]) - 1;
    if (i < 0 || i >= n || j < 0 || j >= matrix.cols())
      file.fail(fmt::format("element ({}, {}) lies outside of the matrix", i + 1, j + 1));
    add(j * n + i, z);
    if (header.mirrored && i != j) add(i * n + j, mirror_image(header, z));
  }
}

}  // namespace

MatrixBuilder read_matrix_market(DataFile& file, std::string_view banner) {
  const Header header = read_header(file, banner);
  const Words sizes = next_words(file);
  if (sizes.size() != (header.coordinate ? 3u : 2u)) file.fail("expected the matrix's size");
  const std::ptrdiff_t rows = whole_number(file, sizes[0]);
  const std::ptrdiff_t cols = whole_number(file, sizes[1]);
  if (rows < 1 || cols < 1) file.fail("the matrix has no elements");
  if (header.mirrored && rows != cols) file.fail("a matrix of this kind must be square");
  MatrixBuilder matrix(rows, cols);
  if (header.coordinate)
    read_coordinates(file, header, whole_number(file, sizes[2]), matrix);
  else
    read_array(file, header, matrix);
  if (!next_words(file).empty()) file.fail("text behind the last entry");
  return matrix;
}

}  // namespace worksheet
