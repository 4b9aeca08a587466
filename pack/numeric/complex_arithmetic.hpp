// Complex numbers in scalar code, for cores and kernels alike: quotient, square root, and the
// modulus with the pack's own rule for overflow. (pack/numeric/moduli.hpp has the one that scales.)
#pragma once

#include "pack/numeric/moduli.hpp"

namespace matrix_pack {

// A complex number, or several side by side in a pair of vectors.
template <class V>
struct ComplexOf {
  V re;
  V im;
};
using Complex = ComplexOf<double>;

// The modulus of z: |im| or |re| when the other part is zero, else sqrt(re^2 + im^2), unscaled.
// Throws SE_FPEOverflow_Exception when that exceeds kLargestModulus.
double cmodulus(const Complex& z);

namespace {

constexpr double kLargestModulus = 1e307;

MATRIX_INLINE bool is_zero(Complex z) {
  return z.re == 0.0 && z.im == 0.0;
}

MATRIX_INLINE Complex add(Complex a, Complex b) {
  return {a.re + b.re, a.im + b.im};
}

MATRIX_INLINE Complex subtract(Complex a, Complex b) {
  return {a.re - b.re, a.im - b.im};
}

// The one formula of a product.
MATRIX_INLINE Complex multiply(Complex a, Complex b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

// a conj(z)
template <class V, class W>
MATRIX_INLINE ComplexOf<V> multiply_conjugate(ComplexOf<V> a, ComplexOf<W> z) {
  return {a.re * z.re + a.im * z.im, a.im * z.re - a.re * z.im};
}

// Smith's quotient (Communications of the ACM 5, 1962): a ratio of the parts of d replaces |d|^2,
// which might overflow or underflow.
MATRIX_INLINE Complex divide(Complex a, Complex d) {
  if (__builtin_fabs(d.im) <= __builtin_fabs(d.re)) {
    const double r = d.im / d.re;
    const double den = d.re + r * d.im;
    return {(a.re + r * a.im) / den, (a.im - r * a.re) / den};
  }
  const double r = d.re / d.im;
  const double den = d.im + r * d.re;
  return {(r * a.re + a.im) / den, (r * a.im - a.re) / den};
}

// The modulus as cmodulus has it, to *modulus; false where cmodulus throws. For kernels.
MATRIX_INLINE bool modulus_in_range(Complex z, double* modulus) {
  if (z.re == 0.0) {
    *modulus = __builtin_fabs(z.im);
    return true;
  }
  if (z.im == 0.0) {
    *modulus = __builtin_fabs(z.re);
    return true;
  }
  *modulus = __builtin_sqrt(z.re * z.re + z.im * z.im);
  return !(*modulus > kLargestModulus);
}

// The square root of z in the right half-plane: one part from the modulus without cancellation, the
// other from im z = 2 re im.
MATRIX_INLINE Complex square_root(Complex z) {
  const double s = __builtin_sqrt((scaled_modulus(z.re, z.im) + __builtin_fabs(z.re)) / 2.0);
  if (s == 0.0) return {0.0, 0.0};
  if (z.re >= 0.0) return {s, z.im / (2.0 * s)};
  return {__builtin_fabs(z.im) / (2.0 * s), z.im < 0.0 ? -s : s};
}

}  // namespace

}  // namespace matrix_pack
