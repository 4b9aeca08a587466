// A triangular system with many right-hand sides, in place: X := L^-1 X.
//
// Split in two until the triangle is small; the rest is one matrix product. Each element of X sees
// the operations of forward substitution by columns, in their order.
//   l        n x n; the strict lower triangle is used, its diagonal being 1
//   x        n x cols
//   cost     n^2 cols flops
#pragma once

#include "linsys/lu/substitution_kernels.hpp"
#include "linsys/product_kernels.hpp"

namespace matrix_pack {

inline const SubstitutionKernels& substitution_kernels_for(RealView) {
  return substitution_kernels();
}
inline const ComplexSubstitutionKernels& substitution_kernels_for(ComplexView) {
  return complex_substitution_kernels();
}

// About half of n, in whole small triangles.
inline Index first_half(Index n) {
  return (n / 2 + kTriangle - 1) / kTriangle * kTriangle;
}

template <class View>
void solve_lower(Index n, View l, Index cols, View x) {
  if (n <= kTriangle) return substitution_kernels_for(x).solve_lower(n, l, cols, x);
  const Index h = first_half(n);
  solve_lower(h, l, cols, x);
  // lower rows := lower rows - (lower left block of L) * upper rows
  subtract_product(n - h, cols, h, l.from(h, 0), x, 1, x.from(h, 0));
  solve_lower(n - h, l.from(h, h), cols, x.from(h, 0));
}

}  // namespace matrix_pack
