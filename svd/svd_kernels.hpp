// The inner loops of the singular value decomposition, on column-major arrays.
//
// Sums have the order of pack/vector_kernels.hpp, also where several are formed at once.
#pragma once

#include <cstddef>

#include "pack/kernel_sets.hpp"

namespace matrix_pack {

struct SvdKernels {
  // dots[k] = the dot product of column k of the rows x cols array a with x
  void (*column_dots)(std::ptrdiff_t rows, std::ptrdiff_t cols, const double* a, std::ptrdiff_t ld,
                      const double* x, double* dots);

  // Both steps of a two-sided reflection of the rows x cols array a, in one pass over memory:
  //   a(j,k) += f[k] * u[j]                          the column step; none when f is null
  //   t[j] = sum over k of a(j,k) * x[k]
  //   a(j,k) += t[j] * y[k]                          the row step
  void (*reflect_both)(std::ptrdiff_t rows, std::ptrdiff_t cols, double* a, std::ptrdiff_t ld,
                       const double* f, const double* u, const double* x, const double* y);

  // One reflection of each column of the rows x cols array a, whose first `lead` rows (0 or 1) do
  // not enter the sums:
  //   f = ((sum over j >= lead of a(j,k) * x[j - lead]) / d) / g,    a(j,k) += f * v[j]
  void (*reflect_columns)(std::ptrdiff_t lead, std::ptrdiff_t rows, std::ptrdiff_t cols, double* a,
                          std::ptrdiff_t ld, const double* x, const double* v, double d, double g);
};
MATRIX_SELECT_KERNELS(SvdKernels, svd_kernels)

}  // namespace matrix_pack
