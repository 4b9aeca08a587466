#include "eigen/complex/unitary_kernels.hpp"

#include "pack/numeric/lanes/column_products.hpp"
#include "pack/numeric/lanes/complex_lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

template <int K>
using ComplexFactors = Factors<K, Complex>;

template <int K>
MATRIX_INLINE ComplexFactors<K> complex_factors(const ConstComplexView& u, Index first) {
  ComplexFactors<K> copies;
  for (int c = 0; c < K; ++c) copies.of[c] = u[first + c];
  return copies;
}

// x := x - w conj(f), then y := y + x g, of K columns x, one after the other: an update that has
// waited, and what the columns add to a product. Without an update w is null, without a product y.
template <int K, bool kUpdate, bool kProduct>
MATRIX_INLINE void update_and_add(Index n, const ComplexFactors<K>& f, const ConstComplexView& w,
                                  const ComplexFactors<K>& g, const ComplexView& y,
                                  const ComplexView& x) {
  over_elements(0, n, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    ComplexOf<V> wk = {};
    ComplexOf<V> yk = {};
    if constexpr (kUpdate) wk = load<V>(w, k);
    if constexpr (kProduct) yk = load<V>(y, k);
    for (int c = 0; c < K; ++c) {
      ComplexOf<V> z = load<V>(x.column(c), k);
      if constexpr (kUpdate) {
        z = subtract(z, multiply_conjugate(wk, f.of[c]));
        store(x.column(c), k, z);
      }
      if constexpr (kProduct) yk = add(yk, multiply(z, g.of[c]));
    }
    if constexpr (kProduct) store(y, k, yk);
  });
}

// x := x - u c with c = u^H x / h: the reflection of n rows of K columns. Before it the update, and
// behind it the product, of update_and_add.
template <int K, bool kUpdate, bool kProduct>
MATRIX_INLINE void update_reflect_and_add(Index n, const ComplexFactors<K>& f,
                                          const ConstComplexView& w, const ConstComplexView& u,
                                          double h, const ComplexFactors<K>& g,
                                          const ComplexView& y, const ComplexView& x) {
  ComplexFactors<K> sums;
  complex_sums_of<K>(n, sums.of, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    ComplexOf<V> wk = {};
    if constexpr (kUpdate) wk = load<V>(w, k);
    return [=, uk = load<V>(u, k)](int c) MATRIX_INLINE_LAMBDA {
      ComplexOf<V> z = load<V>(x.column(c), k);
      if constexpr (kUpdate) {
        z = subtract(z, multiply_conjugate(wk, f.of[c]));
        store(x.column(c), k, z);
      }
      return multiply_conjugate(z, uk);
    };
  });
  for (int c = 0; c < K; ++c) sums.of[c] = {sums.of[c].re / h, sums.of[c].im / h};
  over_elements(0, n, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    const ComplexOf<V> uk = load<V>(u, k);
    ComplexOf<V> yk = {};
    if constexpr (kProduct) yk = load<V>(y, k);
    for (int c = 0; c < K; ++c) {
      const ComplexOf<V> z = subtract(load<V>(x.column(c), k), multiply(uk, sums.of[c]));
      store(x.column(c), k, z);
      if constexpr (kProduct) yk = add(yk, multiply(z, g.of[c]));
    }
    if constexpr (kProduct) store(y, k, yk);
  });
}

// K columns from j on. Both reflections end with the same row. A function of its own: where nothing
// is optimised, what is inlined shares no stack.
template <bool kBefore, bool kNow, int K>
void reflect_group(const UnitaryReflection* before, const UnitaryReflection* now,
                   const ComplexView& a, Index j) {
  ComplexFactors<K> f = {}, g = {};
  ComplexView w = {}, y = {};
  if constexpr (kBefore) f = complex_factors<K>(before->u, j), w = before->w;
  if constexpr (kNow) g = complex_factors<K>(now->u, j), y = now->w;
  const ComplexView x = a.column(j);
  const Index m = kNow ? now->m : before->end;
  // Rows above m: only the product needs them.
  update_and_add<K, kBefore, kNow>(m, f, w, g, y, x);
  if constexpr (kNow)
    update_reflect_and_add<K, kBefore, true>(now->end - m, f, kBefore ? w + m : w, now->u + m,
                                             now->h, g, y + m, x + m);
}

template <bool kBefore, bool kNow>
void reflect_two_sided(const UnitaryReflection* before, const UnitaryReflection* now,
                       const ComplexView& a, Index begin, Index end) {
  by_fours(begin, end,
           [&]<int K>(Index j, Group<K>) { reflect_group<kBefore, kNow, K>(before, now, a, j); });
}

void reflect(const UnitaryReflection* before, const UnitaryReflection* now, const ComplexView& a,
             Index begin, Index end) {
  const Index both = smaller(now != nullptr ? now->end : before->end, end);
  if (now == nullptr) return reflect_two_sided<true, false>(before, now, a, begin, both);
  if (before != nullptr)
    reflect_two_sided<true, true>(before, now, a, begin, both);
  else
    reflect_two_sided<false, true>(before, now, a, begin, both);
  const UnitaryReflection& r = *now;
  by_fours(both, end, [=]<int K>(Index j, Group<K>) MATRIX_INLINE_LAMBDA {
    update_reflect_and_add<K, false, false>(r.end - r.m, {}, {}, r.u + r.m, r.h, {}, {},
                                            a.from(r.m, j));
  });
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
      by_fours(larger(begin, m), last + 1, [=]<int K>(Index j, Group<K>) MATRIX_INLINE_LAMBDA {
        update_reflect_and_add<K, false, false>(end - m, {}, {}, u.from(m, m - 1), h[k], {}, {},
                                                z.from(m, j));
      });
    }
  }
}

}  // namespace

const UnitaryKernels unitary_kernels_table = {reflect, accumulate};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
