// The inner loop of plane rotations of neighbouring columns.
#pragma once

#include <cstddef>

#include "pack/kernel_sets.hpp"

namespace matrix_pack {

// Rotations i = last down to first, of columns i and i+1. pairs[2 (i - first)] is the cosine of
// rotation i, the sine stands behind it.
struct RotationSweep {
  std::ptrdiff_t first;
  std::ptrdiff_t last;
  const double* pairs;
};

struct ColumnRotationKernels {
  // The sweeps, one after the other, applied to the first `rows` rows of z. Rotation i turns the
  // columns (x, y) = (i, i+1) into (c x - s y, s x + c y).
  void (*rotate)(int count, const RotationSweep* sweeps, std::ptrdiff_t rows, double* z,
                 std::ptrdiff_t ld);
};
MATRIX_SELECT_KERNELS(ColumnRotationKernels, column_rotation_kernels)

}  // namespace matrix_pack
