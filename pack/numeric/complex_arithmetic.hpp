// Complex numbers in scalar code: quotient and modulus with the pack's own rules for overflow.
//
// For cores and kernels alike: the inline functions are local to each file that includes this one,
// so that no code compiled for one instruction set ever serves another.
#pragma once

namespace matrix_pack {

// Two adjacent doubles.
struct Complex {
  double re;
  double im;
};

// The modulus of z: |im| or |re| when the other part is zero, else sqrt(re^2 + im^2), unscaled.
// Throws SE_FPEOverflow_Exception when that exceeds kLargestModulus.
double cmodulus(const Complex& z);

namespace {

#define MATRIX_COMPLEX_INLINE [[maybe_unused]] inline __attribute__((always_inline))

constexpr double kLargestModulus = 1e307;

MATRIX_COMPLEX_INLINE bool is_zero(Complex z) {
  return z.re == 0.0 && z.im == 0.0;
}

MATRIX_COMPLEX_INLINE Complex add(Complex a, Complex b) {
  return {a.re + b.re, a.im + b.im};
}

MATRIX_COMPLEX_INLINE Complex subtract(Complex a, Complex b) {
  return {a.re - b.re, a.im - b.im};
}

// The one formula of a product.
MATRIX_COMPLEX_INLINE Complex multiply(Complex a, Complex b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

// Smith's quotient (Communications of the ACM 5, 1962): a ratio of the parts of d replaces |d|^2,
// which might overflow or underflow.
MATRIX_COMPLEX_INLINE Complex divide(Complex a, Complex d) {
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
MATRIX_COMPLEX_INLINE bool modulus_in_range(Complex z, double* modulus) {
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

}  // namespace

}  // namespace matrix_pack
