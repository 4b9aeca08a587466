// Householder reflections of columns. Sums have the order of pack/numeric/vector_kernels.hpp.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

struct ReflectionKernels {
  // One reflection of each column of the rows x cols array a, whose first `lead` rows (0 or 1) do
  // not enter the sums:
  //   f = ((sum over j >= lead of a(j,k) * x[j - lead]) / d) / g,    a(j,k) += f * v[j]
  void (*reflect_columns)(Index lead, Index rows, Index cols, RealView a, const double* x,
                          const double* v, double d, double g);
};
MATRIX_SELECT_KERNELS(ReflectionKernels, reflection_kernels)

}  // namespace matrix_pack
