#include "linsys/cholesky_kernels.hpp"

#include "pack/numeric/lanes/runs.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

MATRIX_INLINE void divide(Index n, double* x, double divisor) {
  with_runs(n, [=]<class R>(R) {
    map_runs<R>(n, x, [=](Index i) { return quotient(load<R>(x + i), divisor); });
  });
}

MATRIX_INLINE void subtract_multiple(Index n, const double* x, double factor, double* y) {
  with_runs(n, [=]<class R>(R) {
    map_runs<R>(n, y,
                [=](Index i) { return minus_multiple(load<R>(y + i), load<R>(x + i), factor); });
  });
}

bool factor_columns(Index n, RealView a, Index cols) {
  for (Index j = 0; j < cols; ++j) {
    double* const column = a.column(j);
    const double s = column[j];
    if (s <= 0.0) return false;
    column[j] = __builtin_sqrt(s);
    divide(n - j - 1, column + j + 1, column[j]);
    for (Index k = j + 1; k < cols; ++k)
      subtract_multiple(n - k, column + k, column[k], a.column(k) + k);
  }
  return true;
}

}  // namespace

const CholeskyKernels cholesky_kernels_table = {factor_columns};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
