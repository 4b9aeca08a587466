// A matrix as aligned lines of text.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "host/worksheet/output/display_options.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

// The indices to show of `count` rows or columns: all if they are at most `most`, else the first
// and the last ones with -1 between them, which stands for at least two.
std::vector<int> shown_indices(int count, int most);

// A text as an element of an array: without what is beyond kCellTextLimit.
std::string cell_text(const char* text);

// The lines of a matrix.
class MatrixText {
 public:
  // `brief` gives the text of a nested element. The matrix, the options and `brief` must outlive
  // this.
  MatrixText(const aMatrix* m, const DisplayOptions& options,
             const std::function<std::string(double element)>& brief);

  // The rows and columns that are shown: all of them unless the matrix is elided.
  int rows() const;
  int cols() const;

  void write(std::ostream& out) const;

 private:
  // Of one column: the texts before and from the point on, of both parts; and as a whole.
  struct Widths {
    std::array<std::uint16_t, 4> pieces = {};
    std::uint32_t total = 0;
  };
  struct Cell;

  void choose();
  std::size_t measure();
  Cell cell(int i, int j) const;
  void write_line(std::ostream& out, int i) const;
  std::string field(const Cell& cell, const Widths& widths) const;

  const aMatrix* m_;
  const DisplayOptions& options_;
  const std::function<std::string(double)>& brief_;
  std::vector<int> rows_, cols_;
  std::vector<Widths> widths_;
};

}  // namespace worksheet
