#include "eigen/shared/balance_kernels.hpp"

#include "pack/numeric/lanes/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

template <class Term>
MATRIX_INLINE double sum(Index count, Index skip, Term term) {
  double s[kLanes] = {};
  Index k = 0;
  for (; k + kLanes <= count; k += kLanes) {
    if (skip >= k && skip < k + kLanes) {
      for (int q = 0; q < kLanes; ++q)
        if (k + q != skip) s[q] += term(k + q);
    } else {
      for (int q = 0; q < kLanes; ++q) s[q] += term(k + q);
    }
  }
  for (int q = 0; k < count; ++k, ++q)
    if (k != skip) s[q] += term(k);
  return join(s);
}

double sum_magnitudes(const double* re, const double* im, Index stride, Index count, Index skip) {
  if (im != nullptr)
    return sum(count, skip, [=](Index k) {
      return __builtin_fabs(re[k * stride]) + __builtin_fabs(im[k * stride]);
    });
  return sum(count, skip, [=](Index k) { return __builtin_fabs(re[k * stride]); });
}

}  // namespace

const BalanceKernels balance_kernels_table = {sum_magnitudes};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
