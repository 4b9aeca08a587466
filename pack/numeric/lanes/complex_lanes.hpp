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

// Sets sums[c] to the sum of n terms of column c, in the one order; terms(k, V{})(c) gives as many
// of them from k on as V has elements.
template <int kColumns, class Terms>
MATRIX_INLINE void complex_sums_of(Index n, Complex* sums, Terms terms) {
  ComplexOf<Vector> lanes[kColumns][kParts] = {};
  Index whole = 0;
  for (; whole + kLanes <= n; whole += kLanes)
    for (int p = 0; p < kParts; ++p) {
      const auto term = terms(whole + p * kWidth, Vector{});
      for (int c = 0; c < kColumns; ++c) lanes[c][p] = add(lanes[c][p], term(c));
    }
  ComplexSums partial[kColumns];
  for (int c = 0; c < kColumns; ++c) partial[c] = sums_of(lanes[c]);
  over_elements(whole, n, [&]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    const auto term = terms(k, V{});
    for (int c = 0; c < kColumns; ++c) {
      const ComplexView at = partial[c].view() + (k - whole);
      store(at, 0, add(load<V>(at, 0), term(c)));
    }
  });
  for (int c = 0; c < kColumns; ++c) sums[c] = partial[c].joined();
}

}  // namespace

}  // namespace matrix_pack::MATRIX_KERNEL_SET
