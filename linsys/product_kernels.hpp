// The matrix product that carries the factorizations: nearly all of their work is done here.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

struct ProductKernels {
  // C := C - A B, one term at a time in ascending order of t: every element of C sees
  //   ((c - a(i,0) b(0,j)) - a(i,1) b(1,j)) - ... - a(i,k-1) b(k-1,j)
  // with each product rounded. These are the operations of k rank-one updates in turn.
  //   A  m x k; a negative distance takes its columns from right to left
  //   B  k x n; b_down is the step from a row to the next: 1, or -1 to take the rows upwards, or,
  //      with the distance 1, that between the columns of the transpose
  //   C  m x n; shares no element with A or B
  void (*subtract_product)(Index m, Index n, Index k, ConstRealView a, ConstRealView b,
                           Index b_down, RealView c);
  // The same for complex matrices; a term is (a_re b_re - a_im b_im, a_re b_im + a_im b_re).
  void (*subtract_complex_product)(Index m, Index n, Index k, const ConstComplexView& a,
                                   const ConstComplexView& b, Index b_down, const ComplexView& c);
};
MATRIX_SELECT_KERNELS(ProductKernels, product_kernels)

inline void subtract_product(Index m, Index n, Index k, ConstRealView a, ConstRealView b,
                             Index b_down, RealView c) {
  product_kernels().subtract_product(m, n, k, a, b, b_down, c);
}
inline void subtract_product(Index m, Index n, Index k, const ConstComplexView& a,
                             const ConstComplexView& b, Index b_down, const ComplexView& c) {
  product_kernels().subtract_complex_product(m, n, k, a, b, b_down, c);
}

}  // namespace matrix_pack
