// Columns of one array to another. Not for kernels.
#pragma once

#include <algorithm>

#include "pack/numeric/views.hpp"

namespace matrix_pack {

inline void copy_columns(Index rows, Index cols, ConstRealView from, RealView to) {
  for (Index k = 0; k < cols; ++k) std::copy_n(from.column(k), rows, to.column(k));
}

}  // namespace matrix_pack
