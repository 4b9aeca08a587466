// The inner loop of balancing.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

struct BalanceKernels {
  // Sum of |re[k stride]| + |im[k stride]| (|re| alone when im is null) over k = 0..count-1 but
  // `skip`, in the one order of a sum; the term that is skipped counts as zero.
  double (*sum_magnitudes)(const double* re, const double* im, Index stride, Index count,
                           Index skip);
};
MATRIX_SELECT_KERNELS(BalanceKernels, balance_kernels)

}  // namespace matrix_pack
