// The plane rotation of the QR decomposition, for cores and kernels alike.
#pragma once

#include "pack/numeric/always_inline.hpp"

namespace matrix_pack {

// The rotation c x + s y, c y - s x.
struct Givens {
  double c;  // The cosine.
  double s;  // The sine.
};

namespace {

// The rotation that takes (a, b) to (r, 0). The signs follow a and b.
//   b = 0: c = 1, s = 0.  |b| <= |a|: t = b / a, c = 1 / sqrt(t^2 + 1), s = c t.
//   else:  t = a / b, s = 1 / sqrt(t^2 + 1), c = s t.
MATRIX_INLINE Givens givens_coeffs(double a, double b) {
  if (b == 0.0) return {1.0, 0.0};
  if (__builtin_fabs(b) <= __builtin_fabs(a)) {
    const double t = b / a;
    const double c = 1.0 / __builtin_sqrt(t * t + 1.0);
    return {c, c * t};
  }
  const double t = a / b;
  const double s = 1.0 / __builtin_sqrt(t * t + 1.0);
  return {s * t, s};
}

}  // namespace

}  // namespace matrix_pack
