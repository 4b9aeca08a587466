// Columns side by side in vectors, for substitution. Included by *_kernels.cpp only; local to each
// file, as pack/numeric/lanes/lanes.hpp is.
#pragma once

#include "pack/numeric/lanes/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// So many vectors.
template <int G>
struct Vectors {};

// Calls body(j, Vectors<G>()) for groups of columns from j on that cover 0...cols - 1: of kMost
// vectors (eight or four), the last one of the least power of two that holds the rest.
template <int kMost, class Body>
MATRIX_INLINE void over_groups(Index cols, Body body) {
  for (Index j = 0; j < cols;) {
    const Index left = cols - j;
    if (kMost > 4 && left > 4 * kWidth) {
      body(j, Vectors<kMost>());
      j += kMost * kWidth;
    } else if (left > 2 * kWidth) {
      body(j, Vectors<4>());
      j += 4 * kWidth;
    } else if (left > kWidth) {
      body(j, Vectors<2>());
      j += 2 * kWidth;
    } else {
      body(j, Vectors<1>());
      j += kWidth;
    }
  }
}

}  // namespace

}  // namespace matrix_pack::MATRIX_KERNEL_SET
