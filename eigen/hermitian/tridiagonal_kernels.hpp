// The inner loops of the Hermitian tridiagonalisation, on the real and imaginary parts of the lower
// triangle of a column-major matrix.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

struct HermitianKernels {
  // In one pass over the lower triangle of the n x n matrix a, whose diagonal is real (its
  // imaginary part is not read):
  //   a := a - v q^H - q v^H     unless v has null parts
  //   w := a x                   unless x has
  // The product goes by pairs of columns k, k + 1, each after its update: first the 2 x 2 block on
  // the diagonal, then w[j] += a(j,k) x[k], w[j] += a(j,k+1) x[k+1] for j > k + 1, last
  // w[k] += sum of conj(a(j,k)) x[j] and the same for k + 1, in the order of
  // pack/numeric/vector_kernels.hpp.
  void (*update_multiply)(Index n, const ComplexView& a, const ComplexView& v, const ComplexView& q,
                          const ComplexView& x, const ComplexView& w);
};
MATRIX_SELECT_KERNELS(HermitianKernels, hermitian_kernels)

}  // namespace matrix_pack
