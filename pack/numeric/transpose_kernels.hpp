// The inner loop of the transpose.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

struct TransposeKernels {
  // The cols x rows array `out` (leading dimension cols) becomes the transpose of the rows x cols
  // array `a` (leading dimension ld).
  void (*transpose)(Index rows, Index cols, const double* a, Index ld, double* out);
};
MATRIX_SELECT_KERNELS(TransposeKernels, transpose_kernels)

}  // namespace matrix_pack
