#include "pack/numeric/transpose_kernels.hpp"

#include "pack/numeric/lanes/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Square tiles of this order keep the lines that are read and those that are written in cache.
constexpr Index kTile = 16;

void transpose(Index rows, Index cols, const double* __restrict a, Index ld,
               double* __restrict out) {
  for (Index j0 = 0; j0 < cols; j0 += kTile) {
    const Index j1 = smaller(j0 + kTile, cols);
    for (Index i0 = 0; i0 < rows; i0 += kTile) {
      const Index i1 = smaller(i0 + kTile, rows);
      for (Index i = i0; i < i1; ++i)
        for (Index j = j0; j < j1; ++j) out[i * cols + j] = a[j * ld + i];
    }
  }
}

}  // namespace

const TransposeKernels transpose_kernels_table = {transpose};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
