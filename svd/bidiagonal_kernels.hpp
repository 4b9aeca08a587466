// The inner loops of the bidiagonalization. Sums have the order of
// pack/numeric/vector_kernels.hpp, also where several are formed at once.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/lines.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// Rows that row_sums takes at a time: their partial sums stay in the second cache.
inline constexpr Index kSumRows = 4096;
// Doubles of work that it needs: eight partial sums for each of them, in whole lines.
inline Index row_sums_work(Index rows) {
  return 8 * ((rows < kSumRows ? rows : kSumRows) + kLine) + 2 * kLine;
}

struct BidiagonalKernels {
  // t[j] = sum over k of (a(j,k) + f[k] * u[j]) * x[k], of the rows x cols array a; without f the
  // sum over k of a(j,k) * x[k]. `work` has row_sums_work(rows) doubles.
  void (*row_sums)(Index rows, Index cols, ConstRealView a, const double* f, const double* u,
                   const double* x, double* work, double* t);

  // A two-sided reflection of the rows x cols array a, and the dot products that begin the next:
  //   a(j,k) += f[k] * u[j]                          the column step; none when u is null
  //   a(j,k) += t[j] * y[k]                          the row step; none when t is null
  //   f[k] = sum over j of a(j,k) * x[j]             unless x is null
  void (*reflect_both)(Index rows, Index cols, RealView a, double* f, const double* u,
                       const double* t, const double* y, const double* x);
};
MATRIX_SELECT_KERNELS(BidiagonalKernels, bidiagonal_kernels)

}  // namespace matrix_pack
