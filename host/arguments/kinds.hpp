// Kinds of matrices by name.
#pragma once

#include <string_view>
#include <vector>

#include "host/arguments/values.hpp"

namespace arguments {

struct Kind {
  const char* name;
  Form form;
  Fill fill;
  bool square = false;  // Only made square.
  bool large = false;   // Also made large.
  // Stands that part of the array down, in the imaginary one of a complex matrix.
  std::optional<double> special = {};
  std::size_t part = 1;
  int gap = 0;  // Between the columns.
};

// Regular and degenerate, graded and extreme, with NaN and infinities; and kinds of one number.
const std::vector<Kind>& kinds();
// How many of them, from the first on, have many numbers: enough to see a difference in a result.
inline constexpr std::size_t kVariedKinds = 32;

// A matrix of a kind. It depends on the name of the kind and the size alone.
Recipe recipe(const Kind& kind, int rows, int cols);

// A matrix of the kind of that name.
aMatrix* make_matrix(efi::Store& store, std::string_view kind, int rows, int cols);

}  // namespace arguments
