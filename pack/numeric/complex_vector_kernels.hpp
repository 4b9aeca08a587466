// Inner loops over complex vectors. Sums have the order of pack/numeric/vector_kernels.hpp.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

struct ComplexVectorKernels {
  // x[k] -= f u[k]
  void (*subtract_multiple)(Index n, Complex f, const ConstComplexView& u, const ComplexView& x);
  // sum of |re[k]| + |im[k]|
  double (*sum_magnitudes)(Index n, const ConstComplexView& x);
  // sum of re[k]^2 + im[k]^2
  double (*sum_squares)(Index n, const ConstComplexView& x);
};
MATRIX_SELECT_KERNELS(ComplexVectorKernels, complex_vector_kernels)

}  // namespace matrix_pack
