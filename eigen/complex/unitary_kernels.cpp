#include "eigen/complex/unitary_kernels.hpp"

#include "pack/numeric/lanes/complex_lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

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

// x := x - u c with c = u^H x / h: the reflection of n rows of a column. Before it the update, and
// behind it the product, of update_and_add.
template <bool kUpdate, bool kProduct>
MATRIX_INLINE void update_reflect_and_add(Index n, Complex f, const ConstComplexView& w,
                                          const ConstComplexView& u, double h, Complex g,
                                          const ComplexView& y, const ComplexView& x) {
  const Complex sum = complex_sum_of(n, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    ComplexOf<V> z = load<V>(x, k);
    if constexpr (kUpdate) {
      z = subtract(z, multiply_conjugate(load<V>(w, k), f));
      store(x, k, z);
    }
    return multiply_conjugate(z, load<V>(u, k));
  });
  const Complex c = {sum.re / h, sum.im / h};
  over_elements(0, n, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    const ComplexOf<V> z = subtract(load<V>(x, k), multiply(load<V>(u, k), c));
    store(x, k, z);
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
  if (update)
    update_and_add<true, true>(m, f, w, g, now->w, x);
  else if (product)
    update_and_add<false, true>(m, f, w, g, now->w, x);
  // Both reflections end with the same row: where there is an update, there is a product.
  const ComplexView u = now->u + m;
  if (update)
    update_reflect_and_add<true, true>(end - m, f, w + m, u, now->h, g, now->w + m, x + m);
  else if (product)
    update_reflect_and_add<false, true>(now->end - m, {}, {}, u, now->h, g, now->w + m, x + m);
  else
    update_reflect_and_add<false, false>(now->end - m, {}, {}, u, now->h, {}, {}, x + m);
}

void reflect(const UnitaryReflection* before, const UnitaryReflection* now, const ComplexView& a,
             Index begin, Index end) {
  for (Index j = begin; j < end; ++j) reflect_column(before, now, j, a.column(j));
}

// Columns that go through the reflections together, so that each vector is loaded once for all.
constexpr Index kTogether = 4;

void accumulate(const ConstComplexView& u, const double* h, Index first, Index count, Index end,
                const ComplexView& z) {
  for (Index begin = first; begin < end; begin += kTogether) {
    const Index last = smaller(begin + kTogether, end) - 1;
    // A column begins as a unit vector: reflections that start below row j leave column j alone.
    for (Index k = smaller(last - first, count - 1); k >= 0; --k) {
      if (h[k] == 0.0) continue;
      const Index m = first + k;
      for (Index j = larger(begin, m); j <= last; ++j)
        update_reflect_and_add<false, false>(end - m, {}, {}, u.from(m, m - 1), h[k], {}, {},
                                             z.from(m, j));
    }
  }
}

}  // namespace

const UnitaryKernels unitary_kernels_table = {reflect, accumulate};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
