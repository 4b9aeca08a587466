#include "host/worksheet/output/matrix_text.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "host/text/text.hpp"
#include "host/worksheet/output/number_text.hpp"

namespace worksheet {

namespace {

constexpr int kGap = -1;  // The index of what stands for the rows or columns that are left out.
constexpr std::size_t kBetweenColumns = 2;

// The text of one element. Down a column the points are aligned, in the real and in the imaginary
// part; what is no number is one text.
struct Cell {
  std::array<std::string, 4> pieces;  // Before and from the point on, of both parts.
  std::string whole;
};

struct ColumnWidths {
  std::array<std::size_t, 4> pieces = {};
  std::size_t total = 0;
};

int shown_count(const std::vector<int>& shown) {
  return static_cast<int>(shown.size()) -
         static_cast<int>(std::count(shown.begin(), shown.end(), kGap));
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

Cell number_cell(const Number& z, int digits) {
  Cell cell;
  auto& [re, re_fraction, im, im_fraction] = cell.pieces;
  if (z.real() != 0.0 || z.imag() == 0.0) cut(number_text(z.real(), digits), &re, &re_fraction);
  if (z.imag() == 0.0) return cell;
  const bool minus = std::signbit(z.imag());
  im = z.real() != 0.0 ? (minus ? " - " : " + ") : (minus ? "-" : "");
  cut(number_text(std::fabs(z.imag()), digits), &im, &im_fraction);
  im_fraction += 'i';
  return cell;
}

class Table {
 public:
  Table(const aMatrix* m, const DisplayOptions& options,
        const std::function<std::string(double)>& brief)
      : m_(m), options_(options), brief_(brief) {}

  MatrixText text() {
    choose();
    MatrixText result = {"", shown_count(rows_), shown_count(cols_)};
    for (const int i : rows_) result.lines += line(i);
    return result;
  }

 private:
  // Chooses what to show: all, or as much as the options allow, but the first and the last always.
  void choose() {
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
  std::size_t measure() {
    widths_.clear();
    std::size_t width = 0;
    for (const int j : cols_) {
      ColumnWidths column;
      for (const int i : rows_) {
        const Cell c = cell(i, j);
        for (std::size_t k = 0; k < c.pieces.size(); ++k)
          column.pieces[k] = std::max(column.pieces[k], c.pieces[k].size());
        column.total = std::max(column.total, character_count(c.whole));
      }
      std::size_t number = 0;
      for (const std::size_t piece : column.pieces) number += piece;
      column.total = std::max(column.total, number);
      width += column.total + kBetweenColumns;
      widths_.push_back(column);
    }
    return width;
  }

  Cell cell(int i, int j) const {
    Cell result;
    if (i == kGap || j == kGap) {
      result.whole = i == j ? "" : "...";
      return result;
    }
    const std::ptrdiff_t k = static_cast<std::ptrdiff_t>(j) * m_->leading_dimension + i;
    const double re = re_at(m_, k);
    if (!efi::is_nested_element(re)) return number_cell({re, im_at(m_, k)}, options_.digits);
    result.whole = brief_(re);
    return result;
  }

  std::string line(int i) const {
    std::string text;
    for (std::size_t at = 0; at < cols_.size(); ++at) {
      const Cell c = cell(i, cols_[at]);
      std::string field = c.whole;
      if (field.empty()) {
        for (std::size_t k = 0; k < c.pieces.size(); ++k) {
          const std::string blanks = padding(widths_[at].pieces[k], c.pieces[k]);
          field += k % 2 == 0 ? blanks + c.pieces[k] : c.pieces[k] + blanks;
        }
      }
      text.append(kBetweenColumns, ' ').append(padding(widths_[at].total, field)).append(field);
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text + '\n';
  }

  const aMatrix* m_;
  const DisplayOptions& options_;
  const std::function<std::string(double)>& brief_;
  std::vector<int> rows_, cols_;
  std::vector<ColumnWidths> widths_;
};

}  // namespace

std::vector<int> shown_indices(int count, int most) {
  const bool all = count <= most;
  const int first = all ? count : most / 2;
  std::vector<int> shown;
  for (int k = 0; k < first; ++k) shown.push_back(k);
  if (all) return shown;
  shown.push_back(kGap);
  for (int k = count - (most - 1 - first); k < count; ++k) shown.push_back(k);
  return shown;
}

MatrixText matrix_text(const aMatrix* m, const DisplayOptions& options,
                       const std::function<std::string(double element)>& brief) {
  return Table(m, options, brief).text();
}

}  // namespace worksheet
