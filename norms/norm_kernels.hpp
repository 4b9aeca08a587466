// The inner loops of the matrix norms.
//
// The magnitude of an element is |re| where `im` is null, else its scaled modulus (see
// pack/numeric/moduli.hpp). Every sum is taken from its first term to its last.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// The most columns (rows) that one call of column_sums (row_sums) takes.
inline constexpr Index kSumColumns = 16;
inline constexpr Index kSumRows = 128;

// Rows of the product that one panel of `gram` makes; work for each row of the matrix.
inline constexpr Index kGramWork = 2 * 16;

struct NormKernels {
  // The sums of the magnitudes of each column (row).
  void (*column_sums)(Index rows, Index cols, const ConstComplexView& a, double* sums);
  void (*row_sums)(Index rows, Index cols, const ConstComplexView& a, double* sums);

  // The largest of `largest`, which is no NaN, and those of n sums that are none.
  double (*largest_sum)(double largest, Index n, const double* sums);

  // For all i <= j: re(j,i) + i im(j,i) = sum over k of conj(a(k,i)) a(k,j), a an n x n matrix with
  // both parts: below the diagonal of the result stands what A^H A has above it. The rest of
  // the n x n arrays re and im (leading dimension n) is not written.
  void (*gram)(Index n, const ConstComplexView& a, double* re, double* im, double* work);
};
MATRIX_SELECT_KERNELS(NormKernels, norm_kernels)

}  // namespace matrix_pack
