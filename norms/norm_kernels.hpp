// The inner loops of the matrix norms.
//
// The magnitude of an element is |x| where y is null, else the modulus of x + iy in the form
// max sqrt((min / max)^2 + 1) of |x| and |y|, and 0 when both are 0. Every sum is taken from its
// first term to its last.
#pragma once

#include <cstddef>

#include "pack/numeric/kernel_sets.hpp"

namespace matrix_pack {

// The part arrays of a column-major matrix.
struct PartArrays {
  const double* x;
  const double* y;
  std::ptrdiff_t ld;
};

// The most columns (rows) that one call of column_sums (row_sums) takes.
inline constexpr std::ptrdiff_t kSumColumns = 16;
inline constexpr std::ptrdiff_t kSumRows = 128;

// Rows of the product that one panel of `gram` makes; work for each row of the matrix.
inline constexpr std::ptrdiff_t kGramWork = 2 * 16;

struct NormKernels {
  // The sums of the magnitudes of each column (row).
  void (*column_sums)(std::ptrdiff_t rows, std::ptrdiff_t cols, const PartArrays& a, double* sums);
  void (*row_sums)(std::ptrdiff_t rows, std::ptrdiff_t cols, const PartArrays& a, double* sums);

  // For all i <= j: re(j,i) + i im(j,i) = sum over k of conj(a(k,i)) a(k,j), a an n x n matrix with
  // both parts: below the diagonal of the result stands what A^H A has above it. The rest of
  // the n x n arrays re and im (leading dimension n) is not written.
  void (*gram)(std::ptrdiff_t n, const PartArrays& a, double* re, double* im, double* work);
};
MATRIX_SELECT_KERNELS(NormKernels, norm_kernels)

}  // namespace matrix_pack
