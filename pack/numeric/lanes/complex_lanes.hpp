// Complex numbers side by side, for kernels: pairs of vectors, loaded from the parts of a view.
// Included by *_kernels.cpp only, as pack/numeric/lanes/lanes.hpp is.
#pragma once

#include "pack/numeric/lanes/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

template <class V>
MATRIX_INLINE ComplexOf<V> load(ConstComplexView x, Index k) {
  return {load<V>(x.re + k), load<V>(x.im + k)};
}

template <class V>
MATRIX_INLINE void store(ComplexView x, Index k, ComplexOf<V> z) {
  store(x.re + k, z.re);
  store(x.im + k, z.im);
}

template <class V>
MATRIX_INLINE ComplexOf<V> add(ComplexOf<V> a, ComplexOf<V> b) {
  return {a.re + b.re, a.im + b.im};
}

template <class V>
MATRIX_INLINE ComplexOf<V> subtract(ComplexOf<V> a, ComplexOf<V> b) {
  return {a.re - b.re, a.im - b.im};
}

// z times a real number.
template <class V>
MATRIX_INLINE ComplexOf<V> scaled(ComplexOf<V> z, double factor) {
  return {z.re * factor, z.im * factor};
}

// a z
template <class V, class W>
MATRIX_INLINE ComplexOf<V> multiply(ComplexOf<V> a, ComplexOf<W> z) {
  return {a.re * z.re - a.im * z.im, a.re * z.im + a.im * z.re};
}

// Eight partial sums of complex terms.
struct ComplexSums {
  double re[kLanes];
  double im[kLanes];

  MATRIX_INLINE ComplexView view() { return {re, im}; }
  MATRIX_INLINE Complex joined() const { return {join(re), join(im)}; }
};

MATRIX_INLINE ComplexSums sums_of(const ComplexOf<Vector> (&lanes)[kParts]) {
  ComplexSums sums;
  for (int p = 0; p < kParts; ++p) store(sums.view(), p * kWidth, lanes[p]);
  return sums;
}

// The sum of n terms in the one order; term(k, V{}) gives as many terms from k on as V has
// elements.
template <class Term>
MATRIX_INLINE Complex complex_sum_of(Index n, Term term) {
  ComplexOf<Vector> lanes[kParts] = {};
  Index whole = 0;
  for (; whole + kLanes <= n; whole += kLanes)
    for (int p = 0; p < kParts; ++p) lanes[p] = add(lanes[p], term(whole + p * kWidth, Vector{}));
  ComplexSums sums = sums_of(lanes);
  over_elements(whole, n, [&]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    const ComplexView at = sums.view() + (k - whole);
    store(at, 0, add(load<V>(at, 0), term(k, V{})));
  });
  return sums.joined();
}

}  // namespace

}  // namespace matrix_pack::MATRIX_KERNEL_SET
