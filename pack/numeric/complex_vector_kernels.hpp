// Inner loops over complex vectors, held as pairs of arrays. Sums have the order of
// pack/numeric/vector_kernels.hpp.
#pragma once

#include <cstddef>

#include "pack/numeric/complex_arithmetic.hpp"
#include "pack/numeric/kernel_sets.hpp"

namespace matrix_pack {

struct ComplexVectorKernels {
  // x[k] -= f u[k]
  void (*subtract_multiple)(std::ptrdiff_t n, Complex f, const double* ur, const double* ui,
                            double* xr, double* xi);
  // Sum of re[k]^2 + im[k]^2.
  double (*sum_squares)(std::ptrdiff_t n, const double* re, const double* im);
};
MATRIX_SELECT_KERNELS(ComplexVectorKernels, complex_vector_kernels)

}  // namespace matrix_pack
