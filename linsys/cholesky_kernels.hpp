// The inner loops of the Cholesky factorization.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

struct CholeskyKernels {
  // Factors the first `cols` columns of the lower triangle a, of order n, which are up to date but
  // for each other: for j = 0, 1, ... a(j,j) := sqrt(a(j,j)), the rest of column j is divided by
  // it, and its products are taken off the columns behind it, of these. False at a pivot <= 0.
  bool (*factor_columns)(Index n, RealView a, Index cols);
};
MATRIX_SELECT_KERNELS(CholeskyKernels, cholesky_kernels)

}  // namespace matrix_pack
