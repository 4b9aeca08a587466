// The product kernels in plain form: the definition of what they compute.
#pragma once

#include "pack/numeric/split.hpp"

namespace matrix_pack::plain {

inline void subtract_product(Index m, Index n, Index k, const double* a, Index lda, const double* b,
                             Steps b_steps, double* c, Index ldc) {
  for (Index t = 0; t < k; ++t)
    for (Index j = 0; j < n; ++j)
      for (Index i = 0; i < m; ++i)
        c[i + j * ldc] -= a[i + t * lda] * b[t * b_steps.down + j * b_steps.across];
}

inline void subtract_product(Index m, Index n, Index k, ConstSplit a, Index lda, ConstSplit b,
                             Steps b_steps, Split c, Index ldc) {
  for (Index t = 0; t < k; ++t) {
    for (Index j = 0; j < n; ++j) {
      const ConstSplit bt = b + (t * b_steps.down + j * b_steps.across);
      for (Index i = 0; i < m; ++i) {
        const ConstSplit at = a + (i + t * lda);
        c.re[i + j * ldc] -= *at.re * *bt.re - *at.im * *bt.im;
        c.im[i + j * ldc] -= *at.re * *bt.im + *at.im * *bt.re;
      }
    }
  }
}

}  // namespace matrix_pack::plain
