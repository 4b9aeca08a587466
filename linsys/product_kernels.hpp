// The matrix product that carries the factorizations: nearly all of their work is done here.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/split.hpp"

namespace matrix_pack {

struct ProductKernels {
  // C := C - A B, one term at a time in ascending order of t: every element of C sees
  //   ((c - a(i,0) b(0,j)) - a(i,1) b(1,j)) - ... - a(i,k-1) b(k-1,j)
  // with each product rounded. These are the operations of k rank-one updates in turn.
  //   A  m x k, columns lda apart (lda < 0: the columns are taken from right to left)
  //   B  k x n, with steps of any sign
  //   C  m x n, columns ldc apart; shares no element with A or B
  void (*subtract_product)(Index m, Index n, Index k, const double* a, Index lda, const double* b,
                           Steps b_steps, double* c, Index ldc);
  // The same for complex matrices; a term is (a_re b_re - a_im b_im, a_re b_im + a_im b_re).
  void (*subtract_complex_product)(Index m, Index n, Index k, ConstSplit a, Index lda, ConstSplit b,
                                   Steps b_steps, Split c, Index ldc);
};
MATRIX_SELECT_KERNELS(ProductKernels, product_kernels)

inline void subtract_product(Index m, Index n, Index k, const double* a, Index lda, const double* b,
                             Steps b_steps, double* c, Index ldc) {
  product_kernels().subtract_product(m, n, k, a, lda, b, b_steps, c, ldc);
}
inline void subtract_product(Index m, Index n, Index k, ConstSplit a, Index lda, ConstSplit b,
                             Steps b_steps, Split c, Index ldc) {
  product_kernels().subtract_complex_product(m, n, k, a, lda, b, b_steps, c, ldc);
}

}  // namespace matrix_pack
