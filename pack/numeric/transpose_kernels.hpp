// The inner loop of the transpose.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

struct TransposeKernels {
  // The cols x rows array `out` becomes the transpose of the rows x cols array `a`. Distances of
  // columns may be negative.
  void (*transpose)(Index rows, Index cols, ConstRealView a, RealView out);
};
MATRIX_SELECT_KERNELS(TransposeKernels, transpose_kernels)

}  // namespace matrix_pack
