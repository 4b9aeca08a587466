#include "eigen/complex/unitary_kernels.hpp"

#include "pack/numeric/lanes/complex_lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// x := x - f u with f = u^H x / h: the reflection of n rows of a column.
MATRIX_INLINE void reflect_rows(Index n, const ConstComplexView& u, double h,
                                const ComplexView& x) {
  const Complex product = complex_sum_of(n, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    return multiply_conjugate(load<V>(x, k), load<V>(u, k));
  });
  const Complex f = {product.re / h, product.im / h};
  over_elements(0, n, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    store(x, k, subtract(load<V>(x, k), multiply(load<V>(u, k), f)));
  });
}

// x := x - w conj(f), then y := y + x g: an update of a column that has waited, and what the column
// adds to a product. Without an update w is null, without a product y.
template <bool kUpdate, bool kProduct>
MATRIX_INLINE void update_and_add(Index n, Complex f, const ConstComplexView& w, Complex g,
                                  const ComplexView& y, const ComplexView& x) {
  over_elements(0, n, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    ComplexOf<V> z = load<V>(x, k);
    if constexpr (kUpdate) {
      z = subtract(z, multiply_conjugate(load<V>(w, k), f));
      store(x, k, z);
    }
    if constexpr (kProduct) store(y, k, add(load<V>(y, k), multiply(z, g)));
  });
}

void reflect_column(const UnitaryReflection* before, const UnitaryReflection* now, Index j,
                    const ComplexView& x) {
  const bool update = before != nullptr && j >= before->m && j < before->end;
  const Complex f = update ? before->u[j] : Complex{0.0, 0.0};
  const ComplexView w = update ? before->w : ComplexView{};
  const Index end = update ? before->end : 0;
  if (now == nullptr) {
    if (update) update_and_add<true, false>(end, f, w, {}, {}, x);
    return;
  }
  const Index m = now->m;
  const bool product = j < now->end;
  const Complex g = product ? now->u[j] : Complex{0.0, 0.0};
  // Rows above m: only the product needs them.
  if (update && product)
    update_and_add<true, true>(m, f, w, g, now->w, x);
  else if (product)
    update_and_add<false, true>(m, f, w, g, now->w, x);
  if (update) update_and_add<true, false>(end - m, f, w + m, {}, {}, x + m);
  const Index n = now->end - m;
  reflect_rows(n, now->u + m, now->h, x + m);
  if (product) update_and_add<false, true>(n, {}, {}, g, now->w + m, x + m);
}

void reflect(const UnitaryReflection* before, const UnitaryReflection* now, const ComplexView& a,
             Index begin, Index end) {
  for (Index j = begin; j < end; ++j) reflect_column(before, now, j, a.column(j));
}

void accumulate(const ConstComplexView& u, const double* h, Index first, Index count, Index end,
                const ComplexView& z) {
  for (Index j = first; j < end; ++j) {
    // The column begins as a unit vector: reflections that start below row j leave it alone.
    for (Index k = smaller(j - first, count - 1); k >= 0; --k) {
      if (h[k] == 0.0) continue;
      const Index m = first + k;
      reflect_rows(end - m, u.from(m, m - 1), h[k], z.from(m, j));
    }
  }
}

}  // namespace

const UnitaryKernels unitary_kernels_table = {reflect, accumulate};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
