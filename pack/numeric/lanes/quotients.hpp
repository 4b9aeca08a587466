// Quotients by one complex number, for kernels: what depends on the divisor alone is computed once.
// Included by *_kernels.cpp only, as pack/numeric/lanes/lanes.hpp is.
#pragma once

#include "pack/numeric/lanes/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Smith's quotient, see pack/numeric/complex_arithmetic.hpp: the ratio of the divisor's parts, the
// smaller one to the larger one, and the denominator.
struct Divisor {
  bool real_is_larger;
  double ratio;
  double denominator;
};

MATRIX_INLINE Divisor divisor(Complex d) {
  if (__builtin_fabs(d.im) <= __builtin_fabs(d.re)) {
    const double r = d.im / d.re;
    return {true, r, d.re + r * d.im};
  }
  const double r = d.re / d.im;
  return {false, r, d.im + r * d.re};
}

// (re + i im) / d, for numbers or vectors of them.
template <class V>
MATRIX_INLINE ComplexOf<V> quotient(V re, V im, const Divisor& d) {
  if (d.real_is_larger)
    return {(re + d.ratio * im) / d.denominator, (im - d.ratio * re) / d.denominator};
  return {(d.ratio * re + im) / d.denominator, (d.ratio * im - re) / d.denominator};
}

}  // namespace

}  // namespace matrix_pack::MATRIX_KERNEL_SET
