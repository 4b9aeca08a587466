// Modulus and square root of complex numbers as the complex eigenvalue iteration takes them. Local
// to each file that includes this one: cores and kernels alike may use them.
#pragma once

#include "pack/numeric/complex_arithmetic.hpp"

namespace matrix_pack {

namespace {

// The modulus of (a, b): the larger magnitude times sqrt(1 + ratio^2), 0 when both are zero.
MATRIX_COMPLEX_INLINE double scaled_modulus(double a, double b) {
  const double x = __builtin_fabs(a);
  const double y = __builtin_fabs(b);
  const double larger = x > y ? x : y;
  if (larger == 0.0) return 0.0;
  const double ratio = (x > y ? y : x) / larger;
  return larger * __builtin_sqrt(ratio * ratio + 1.0);
}

// The square root of z in the right half-plane: one part from the modulus without cancellation, the
// other from im z = 2 re im.
MATRIX_COMPLEX_INLINE Complex square_root(Complex z) {
  const double s = __builtin_sqrt((scaled_modulus(z.re, z.im) + __builtin_fabs(z.re)) / 2.0);
  if (s == 0.0) return {0.0, 0.0};
  if (z.re >= 0.0) return {s, z.im / (2.0 * s)};
  return {__builtin_fabs(z.im) / (2.0 * s), z.im < 0.0 ? -s : s};
}

}  // namespace

}  // namespace matrix_pack
