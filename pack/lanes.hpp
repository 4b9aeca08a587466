// Eight doubles side by side, for kernels, in as many vectors as the instruction set needs. The
// bits are the same whatever the width. Included by *_kernels.cpp only; every function is local to
// its file, so that no code compiled for one instruction set ever serves another.
#pragma once

#include <cstddef>

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

constexpr int kLanes = 8;

// The widest vector of the instruction set. (Wider ones than it has would be kept in memory.)
#if defined(__AVX512F__)
constexpr int kWidth = 8;
#elif defined(__AVX__)
constexpr int kWidth = 4;
#else
constexpr int kWidth = 2;
#endif
constexpr int kParts = kLanes / kWidth;

typedef double Vector __attribute__((vector_size(8 * kWidth)));
typedef double UnalignedVector __attribute__((vector_size(8 * kWidth), aligned(8), may_alias));
typedef long long VectorBits __attribute__((vector_size(8 * kWidth)));

#define MATRIX_LANES_INLINE [[maybe_unused]] inline __attribute__((always_inline))

MATRIX_LANES_INLINE Vector load_vector(const double* p) {
  return *reinterpret_cast<const UnalignedVector*>(p);
}

MATRIX_LANES_INLINE void store_vector(double* p, Vector x) {
  *reinterpret_cast<UnalignedVector*>(p) = x;
}

MATRIX_LANES_INLINE Vector magnitude(Vector x) {
  return reinterpret_cast<Vector>(reinterpret_cast<VectorBits>(x) & 0x7FFFFFFFFFFFFFFFLL);
}

struct Lanes {
  Vector part[kParts];
};

// sums[q] += x[q] * y[q]
MATRIX_LANES_INLINE void add_products(Lanes& sums, const double* x, const double* y) {
  for (int i = 0; i < kParts; ++i)
    sums.part[i] += load_vector(x + i * kWidth) * load_vector(y + i * kWidth);
}

// sums[q] += |x[q]|
MATRIX_LANES_INLINE void add_magnitudes(Lanes& sums, const double* x) {
  for (int i = 0; i < kParts; ++i) sums.part[i] += magnitude(load_vector(x + i * kWidth));
}

MATRIX_LANES_INLINE void store_lanes(double* p, const Lanes& lanes) {
  for (int i = 0; i < kParts; ++i) store_vector(p + i * kWidth, lanes.part[i]);
}

// The one order in which eight partial sums are joined.
MATRIX_LANES_INLINE double join(const double* s) {
  return ((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7]));
}

}  // namespace

}  // namespace matrix_pack::MATRIX_KERNEL_SET
