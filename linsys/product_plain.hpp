// The product kernels in plain form: the definition of what they compute.
#pragma once

#include "pack/numeric/views.hpp"

namespace matrix_pack::plain {

inline void subtract_product(Index m, Index n, Index k, ConstRealView a, ConstRealView b,
                             Index b_down, RealView c) {
  for (Index t = 0; t < k; ++t)
    for (Index j = 0; j < n; ++j)
      for (Index i = 0; i < m; ++i) c(i, j) -= a(i, t) * b(t * b_down, j);
}

inline void subtract_product(Index m, Index n, Index k, const ConstComplexView& a,
                             const ConstComplexView& b, Index b_down, const ComplexView& c) {
  for (Index t = 0; t < k; ++t)
    for (Index j = 0; j < n; ++j)
      for (Index i = 0; i < m; ++i)
        c.set(i, j, subtract(c(i, j), multiply(a(i, t), b(t * b_down, j))));
}

}  // namespace matrix_pack::plain
