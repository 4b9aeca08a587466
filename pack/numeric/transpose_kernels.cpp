#include "pack/numeric/transpose_kernels.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Square tiles of this order keep the lines that are read and those that are written in cache.
constexpr std::ptrdiff_t kTile = 16;

std::ptrdiff_t smaller(std::ptrdiff_t a, std::ptrdiff_t b) {
  return a < b ? a : b;
}

void transpose(std::ptrdiff_t rows, std::ptrdiff_t cols, const double* __restrict a,
               std::ptrdiff_t ld, double* __restrict out) {
  for (std::ptrdiff_t j0 = 0; j0 < cols; j0 += kTile) {
    const std::ptrdiff_t j1 = smaller(j0 + kTile, cols);
    for (std::ptrdiff_t i0 = 0; i0 < rows; i0 += kTile) {
      const std::ptrdiff_t i1 = smaller(i0 + kTile, rows);
      for (std::ptrdiff_t i = i0; i < i1; ++i)
        for (std::ptrdiff_t j = j0; j < j1; ++j) out[i * cols + j] = a[j * ld + i];
    }
  }
}

}  // namespace

const TransposeKernels transpose_kernels_table = {transpose};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
