// The inner loop of the transpose.
#pragma once

#include <cstddef>

#include "pack/numeric/kernel_sets.hpp"

namespace matrix_pack {

struct TransposeKernels {
  // The cols x rows array `out` (leading dimension cols) becomes the transpose of the rows x cols
  // array `a` (leading dimension ld).
  void (*transpose)(std::ptrdiff_t rows, std::ptrdiff_t cols, const double* a, std::ptrdiff_t ld,
                    double* out);
};
MATRIX_SELECT_KERNELS(TransposeKernels, transpose_kernels)

}  // namespace matrix_pack
