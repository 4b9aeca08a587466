// A matrix as aligned lines of text.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/worksheet/engine/value.hpp"
#include "host/worksheet/output/display_options.hpp"

namespace worksheet {

// The indices to show of `count` rows or columns: all if they are at most `most`, else the first
// and the last ones with -1 between them, which stands for at least two.
std::vector<int> shown_indices(int count, int most);

struct MatrixText {
  std::string lines;
  int rows;  // That are shown...
  int cols;  // ... and columns; all of them unless the matrix is elided.
};

// `brief` gives the text of a nested element.
MatrixText matrix_text(const aMatrix* m, const DisplayOptions& options,
                       const std::function<std::string(double element)>& brief);

}  // namespace worksheet
