// The inner loops of the Hermitian tridiagonalisation, on the real and imaginary parts of the lower
// triangle of a column-major matrix.
#pragma once

#include <cstddef>

#include "eigen/shared/complex_arrays.hpp"
#include "pack/numeric/kernel_sets.hpp"

namespace matrix_pack {

struct HermitianKernels {
  // sum of |x.re[k]| + |x.im[k]|, and of x.re[k]^2 + x.im[k]^2, in the order of
  // pack/numeric/vector_kernels.hpp
  double (*sum_magnitudes)(std::ptrdiff_t n, const ComplexVector& x);
  double (*sum_squares)(std::ptrdiff_t n, const ComplexVector& x);

  // In one pass over the lower triangle of the n x n matrix a, whose diagonal is real (its
  // imaginary part is not read):
  //   a := a - v q^H - q v^H     unless v has null parts
  //   w := a x                   unless x has
  // The product goes by pairs of columns k, k + 1, each after its update: first the 2 x 2 block on
  // the diagonal, then w[j] += a(j,k) x[k], w[j] += a(j,k+1) x[k+1] for j > k + 1, last
  // w[k] += sum of conj(a(j,k)) x[j] and the same for k + 1, in the order of
  // pack/numeric/vector_kernels.hpp.
  void (*update_multiply)(std::ptrdiff_t n, const ComplexArray& a, const ComplexVector& v,
                          const ComplexVector& q, const ComplexVector& x, const ComplexVector& w);
};
MATRIX_SELECT_KERNELS(HermitianKernels, hermitian_kernels)

}  // namespace matrix_pack
