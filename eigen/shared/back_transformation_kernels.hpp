// The inner loops of the way back of eigenvectors.
#pragma once

#include <cstddef>

#include "pack/numeric/kernel_sets.hpp"

namespace matrix_pack {

struct TriangularKernels {
  // Columns j = 0..cols-1 (cols <= 4) of `out` become the sums of Z(:,k) X(k,j) over
  // k = 0..last[j]-1 in ascending order, from zero. `out` may lie in Z: all columns of a row are
  // read before any is written.
  void (*combine)(std::ptrdiff_t rows, const double* z, std::ptrdiff_t ldz, int cols,
                  const double* x, std::ptrdiff_t ldx, const std::ptrdiff_t* count, double* out);
};
MATRIX_SELECT_KERNELS(TriangularKernels, triangular_kernels)

}  // namespace matrix_pack
