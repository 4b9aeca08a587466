// Triangular systems with many right-hand sides, in place: X := L^-1 X and X := U^-1 X.
//
// Split in two until the triangle is small; the rest is one matrix product. Each element of X sees
// the operations of forward (backward) substitution by columns, in their order.
//   l, u     n x n, columns ldl apart; of l the strict lower triangle is used, its diagonal being
//   1,
//            of u the upper triangle
//   x        n x cols, columns ldx apart
//   cost     n^2 cols flops
#pragma once

#include "linsys/lu/substitution_kernels.hpp"
#include "linsys/product_kernels.hpp"

namespace matrix_pack {

inline void solve_small_lower(Index n, const double* l, Index ldl, Index cols, double* x,
                              Index ldx) {
  substitution_kernels().solve_lower(n, l, ldl, cols, x, ldx);
}
inline void solve_small_lower(Index n, ConstSplit l, Index ldl, Index cols, Split x, Index ldx) {
  complex_substitution_kernels().solve_lower(n, l, ldl, cols, x, ldx);
}
inline void solve_small_upper(Index n, const double* u, Index ldu, Index cols, double* x,
                              Index ldx) {
  substitution_kernels().solve_upper(n, u, ldu, cols, x, ldx);
}
inline void solve_small_upper(Index n, ConstSplit u, Index ldu, Index cols, Split x, Index ldx) {
  complex_substitution_kernels().solve_upper(n, u, ldu, cols, x, ldx);
}

// About half of n, in whole small triangles.
inline Index first_half(Index n) {
  return (n / 2 + kTriangle - 1) / kTriangle * kTriangle;
}

template <class Triangle, class Array>
void solve_lower(Index n, Triangle l, Index ldl, Index cols, Array x, Index ldx) {
  if (n <= kTriangle) {
    solve_small_lower(n, l, ldl, cols, x, ldx);
    return;
  }
  const Index h = first_half(n);
  solve_lower(h, l, ldl, cols, x, ldx);
  // lower rows := lower rows - (lower left block of L) * upper rows
  subtract_product(n - h, cols, h, l + h, ldl, x, {1, ldx}, x + h, ldx);
  solve_lower(n - h, l + (h + h * ldl), ldl, cols, x + h, ldx);
}

template <class Triangle, class Array>
void solve_upper(Index n, Triangle u, Index ldu, Index cols, Array x, Index ldx) {
  if (n <= kTriangle) {
    solve_small_upper(n, u, ldu, cols, x, ldx);
    return;
  }
  const Index h = first_half(n);
  solve_upper(n - h, u + (h + h * ldu), ldu, cols, x + h, ldx);
  // upper rows := upper rows - (upper right block of U) * lower rows, from the last of these up
  subtract_product(h, cols, n - h, u + (n - 1) * ldu, -ldu, x + (n - 1), {-1, ldx}, x, ldx);
  solve_upper(h, u, ldu, cols, x, ldx);
}

}  // namespace matrix_pack
