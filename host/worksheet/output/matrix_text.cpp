#include "host/worksheet/output/matrix_text.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ostream>
#include <span>

#include "host/text/text.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/output/number_text.hpp"

namespace worksheet {

namespace {

constexpr int kLeftOut = -1;  // The index of what stands for the rows or columns that are left out.
constexpr std::size_t kBetweenColumns = 2;

int shown_count(const std::vector<int>& shown) {
  return static_cast<int>(shown.size()) -
         static_cast<int>(std::count(shown.begin(), shown.end(), kLeftOut));
}

std::string padding(std::size_t width, const std::string& text) {
  return std::string(width - std::min(width, character_count(text)), ' ');
}

// Cuts the text of a real number before its point, or its exponent.
void cut(const std::string& number, std::string* before, std::string* behind) {
  const std::size_t at = std::min(number.find_first_of(".e"), number.size());
  *before += number.substr(0, at);
  *behind = number.substr(at);
}

}  // namespace

// The text of one element. Down a column the points are aligned, in the real and in the imaginary
// part; what is no number is one text.
struct MatrixText::Cell {
  std::array<std::string, 4> pieces;  // Before and from the point on, of both parts.
  std::string whole;

  static Cell of_number(const Number& z, const NumberFormat& format);
};

MatrixText::Cell MatrixText::Cell::of_number(const Number& z, const NumberFormat& format) {
  Cell cell;
  auto& [re, re_fraction, im, im_fraction] = cell.pieces;
  if (z.real() != 0.0 || z.imag() == 0.0) cut(number_text(z.real(), format), &re, &re_fraction);
  if (z.imag() == 0.0) return cell;
  const bool minus = std::signbit(z.imag());
  im = z.real() != 0.0 ? (minus ? " - " : " + ") : (minus ? "-" : "");
  cut(number_text(std::fabs(z.imag()), format), &im, &im_fraction);
  im_fraction += 'i';
  return cell;
}

MatrixText::MatrixText(const aMatrix* m, const DisplayOptions& options,
                       const std::function<std::string(double element)>& brief)
    : m_(m), options_(options), brief_(brief) {
  choose();
}

int MatrixText::rows() const {
  return shown_count(rows_);
}

int MatrixText::cols() const {
  return shown_count(cols_);
}

void MatrixText::write(std::ostream& out) const {
  for (const int i : rows_) {
    write_line(out, i);
    if (!out) return;
  }
}

// Chooses what to show: all, or as much as the options allow, but the first and the last always.
void MatrixText::choose() {
  rows_ = shown_indices(m_->rows, options_.all ? m_->rows : options_.most_rows + 1);
  if (options_.all) {
    cols_ = shown_indices(m_->cols, m_->cols);
    measure();
    return;
  }
  const int narrowest = 1 + static_cast<int>(kBetweenColumns);
  for (int most = std::min(m_->cols, options_.width / narrowest);; --most) {
    cols_ = shown_indices(m_->cols, std::max(most, 2) + 1);
    if (measure() <= static_cast<std::size_t>(options_.width) || most <= 2) return;
  }
}

// Finds the widths of the columns; gives that of a line.
std::size_t MatrixText::measure() {
  widths_.clear();
  std::size_t width = 0;
  for (const int j : cols_) {
    Widths column;
    for (const int i : rows_) {
      const Cell c = cell(i, j);
      for (std::size_t k = 0; k < c.pieces.size(); ++k)
        column.pieces[k] =
            std::max(column.pieces[k], static_cast<std::uint16_t>(c.pieces[k].size()));
      column.total = std::max(column.total, static_cast<std::uint32_t>(character_count(c.whole)));
    }
    std::uint32_t number = 0;
    for (const std::uint16_t piece : column.pieces) number += piece;
    column.total = std::max(column.total, number);
    width += column.total + kBetweenColumns;
    widths_.push_back(column);
  }
  return width;
}

MatrixText::Cell MatrixText::cell(int i, int j) const {
  Cell result;
  if (i == kLeftOut || j == kLeftOut) {
    result.whole = i == j ? "" : "...";
    return result;
  }
  const std::ptrdiff_t k = static_cast<std::ptrdiff_t>(j) * m_->leading_dimension + i;
  const double re = re_at(m_, k);
  if (!efi::is_nested_element(re)) return Cell::of_number({re, im_at(m_, k)}, options_.format);
  result.whole = brief_(re);
  return result;
}

std::string MatrixText::field(const Cell& cell, const Widths& widths) const {
  if (!cell.whole.empty()) return cell.whole;
  std::string text;
  for (std::size_t k = 0; k < cell.pieces.size(); ++k) {
    const std::string blanks = padding(widths.pieces[k], cell.pieces[k]);
    text += k % 2 == 0 ? blanks + cell.pieces[k] : cell.pieces[k] + blanks;
  }
  return text;
}

// Without blanks at its end.
void MatrixText::write_line(std::ostream& out, int i) const {
  constexpr std::size_t kHeld = 4096;
  std::string text;
  for (std::size_t at = 0; at < cols_.size() && out; ++at) {
    const std::string shown = field(cell(i, cols_[at]), widths_[at]);
    text.append(kBetweenColumns, ' ').append(padding(widths_[at].total, shown)).append(shown);
    if (text.size() < kHeld && at + 1 < cols_.size()) continue;
    const std::size_t end = text.find_last_not_of(' ') + 1;
    out << std::string_view(text).substr(0, end);
    text.erase(0, end);
  }
  out << '\n';
}

std::string cell_text(const char* text) {
  constexpr std::size_t kMost = kCellTextLimit.most;
  const std::vector<std::string> shown =
      characters(std::string_view(text, strnlen(text, 8 * kMost)));
  if (shown.size() <= kMost) return text;
  return joined(std::span(shown).first(kMost), "") + "...";
}

std::vector<int> shown_indices(int count, int most) {
  const bool all = count <= most;
  const int first = all ? count : most / 2;
  std::vector<int> shown;
  for (int k = 0; k < first; ++k) shown.push_back(k);
  if (all) return shown;
  shown.push_back(kLeftOut);
  for (int k = count - (most - 1 - first); k < count; ++k) shown.push_back(k);
  return shown;
}

}  // namespace worksheet
