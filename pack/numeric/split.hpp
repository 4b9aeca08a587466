// Pointers into column-major arrays, real (a plain pointer) or complex (a pointer into each part),
// so that the algorithms of this folder are written once for both.
#pragma once

#include <cstddef>

namespace matrix_pack {

using Index = std::ptrdiff_t;

// Local to each file that includes this one: no code compiled for one instruction set serves
// another.
#define MATRIX_SPLIT_INLINE inline __attribute__((always_inline))

// A place in an array of complex numbers whose real and imaginary parts stand apart.
struct Split {
  double* re;
  double* im;
};

struct ConstSplit {
  MATRIX_SPLIT_INLINE ConstSplit(const double* real, const double* imaginary)
      : re(real), im(imaginary) {}
  MATRIX_SPLIT_INLINE ConstSplit(Split p) : re(p.re), im(p.im) {}
  const double* re;
  const double* im;
};

MATRIX_SPLIT_INLINE Split operator+(Split p, Index n) {
  return {p.re + n, p.im + n};
}
MATRIX_SPLIT_INLINE ConstSplit operator+(ConstSplit p, Index n) {
  return {p.re + n, p.im + n};
}

// From an element to the next one below it and to the next one beside it.
struct Steps {
  Index down;
  Index across;
};

}  // namespace matrix_pack
