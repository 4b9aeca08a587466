// A matrix as aligned lines of text.
#pragma once

#include <functional>
#include <string>

#include "host/worksheet/output/display.hpp"

namespace worksheet {

struct MatrixText {
  std::string lines;
  int rows;  // That are shown...
  int cols;  // ... and columns; all of them unless the matrix is elided.
};

// `brief` gives the text of a nested element.
MatrixText matrix_text(const aMatrix* m, const DisplayOptions& options,
                       const std::function<std::string(double element)>& brief);

}  // namespace worksheet
