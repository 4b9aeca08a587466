// Householder reflections of columns. Sums have the order of pack/numeric/vector_kernels.hpp.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// A reflection of columns c, from given rows on to the last:
//   f = ((sum over j of c[sum_row + j] * x[j]) / d) / g,    c[row + j] += f * v[j]
struct ColumnReflection {
  Index sum_row;
  const double* x;
  Index row;
  const double* v;
  double d;
  double g;
};

struct ReflectionKernels {
  // `count` reflections, one after the other, of each column of the rows x cols array a. None sums
  // from below the row from which the one before it reflects.
  void (*reflect_columns)(Index rows, Index cols, RealView a, const ColumnReflection* reflections,
                          Index count);
};
MATRIX_SELECT_KERNELS(ReflectionKernels, reflection_kernels)

}  // namespace matrix_pack
