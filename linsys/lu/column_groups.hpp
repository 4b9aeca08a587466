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
// vectors as long as there are so many columns, then of as many as hold the rest.
template <int kMost, class Body>
MATRIX_INLINE void over_groups(Index cols, Body body) {
  Index j = 0;
  for (; cols - j > (kMost - 1) * kWidth; j += kMost * kWidth) body(j, Vectors<kMost>());
  if constexpr (kMost > 1)
    if (j < cols)
      over_groups<kMost - 1>(cols - j,
                             [=](Index k, auto v) MATRIX_INLINE_LAMBDA { body(j + k, v); });
}

}  // namespace

}  // namespace matrix_pack::MATRIX_KERNEL_SET
