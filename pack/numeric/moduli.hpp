// Magnitudes and moduli of numbers, or of vectors of numbers side by side. For cores and kernels
// alike.
#pragma once

#include "pack/numeric/always_inline.hpp"

namespace matrix_pack {

namespace {

template <class V>
constexpr bool kIsNumber = sizeof(V) == sizeof(double);

template <class V>
MATRIX_INLINE V magnitude(V x) {
  if constexpr (kIsNumber<V>) {
    return __builtin_fabs(x);
  } else {
    typedef long long Bits __attribute__((vector_size(sizeof(V))));
    return reinterpret_cast<V>(reinterpret_cast<Bits>(x) & 0x7FFFFFFFFFFFFFFFLL);
  }
}

// The modulus of re + i im without overflow or underflow on the way: the larger magnitude times
// sqrt(1 + ratio^2), 0 when both are zero. (Nothing is divided by zero.)
template <class V>
MATRIX_INLINE V scaled_modulus(V re, V im) {
  const V x = magnitude(re);
  const V y = magnitude(im);
  const V larger = x > y ? x : y;
  const V smaller = x > y ? y : x;
  if constexpr (kIsNumber<V>) {
    if (larger == 0.0) return smaller;
    const double ratio = smaller / larger;
    return larger * __builtin_sqrt(ratio * ratio + 1.0);
  } else {
    const V ratio = smaller / (larger == 0.0 ? V{} + 1.0 : larger);
    V root = ratio * ratio + 1.0;
    for (unsigned k = 0; k < sizeof(V) / sizeof(double); ++k) root[k] = __builtin_sqrt(root[k]);
    return larger * root;
  }
}

}  // namespace

}  // namespace matrix_pack
