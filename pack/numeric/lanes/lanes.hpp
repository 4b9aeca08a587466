// Eight doubles side by side, for kernels, in as many vectors as the instruction set needs. The
// bits are the same whatever the width. Included by *_kernels.cpp only; every function is local to
// its file, so that no code compiled for one instruction set ever serves another.
#pragma once

#include "pack/numeric/lines.hpp"
#include "pack/numeric/moduli.hpp"
#include "pack/numeric/views.hpp"

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
typedef long long VectorBits __attribute__((vector_size(8 * kWidth)));

// Loads and stores of any width, a single double included.
template <class V>
MATRIX_INLINE V load(const double* p) {
  typedef V Unaligned __attribute__((aligned(8), may_alias));
  return *reinterpret_cast<const Unaligned*>(p);
}

template <class V>
MATRIX_INLINE void store(double* p, V x) {
  typedef V Unaligned __attribute__((aligned(8), may_alias));
  *reinterpret_cast<Unaligned*>(p) = x;
}

MATRIX_INLINE Vector load_vector(const double* p) {
  return load<Vector>(p);
}

MATRIX_INLINE void store_vector(double* p, Vector x) {
  store(p, x);
}

MATRIX_INLINE Index smaller(Index a, Index b) {
  return a < b ? a : b;
}

MATRIX_INLINE Index larger(Index a, Index b) {
  return a > b ? a : b;
}

struct Lanes {
  Vector part[kParts];
};

// Calls body(k, V{}) for stretches of elements from k on that together cover from...n: as many of
// the full width as fit, then at most one of each smaller width. Nothing beyond n is touched.
template <class Body>
MATRIX_INLINE void over_elements(Index from, Index n, Body body) {
  typedef double Four __attribute__((vector_size(32)));
  typedef double Two __attribute__((vector_size(16)));
  Index k = from;
  for (; k + kWidth <= n; k += kWidth) body(k, Vector{});
  if constexpr (kWidth > 4)
    if (k + 4 <= n) {
      body(k, Four{});
      k += 4;
    }
  if constexpr (kWidth > 2)
    if (k + 2 <= n) {
      body(k, Two{});
      k += 2;
    }
  if (k < n) body(k, double{});
}

MATRIX_INLINE void store_lanes(double* p, const Lanes& lanes) {
  for (int i = 0; i < kParts; ++i) store_vector(p + i * kWidth, lanes.part[i]);
}

// The one order in which eight partial sums are joined.
MATRIX_INLINE double join(const double* s) {
  return ((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7]));
}

// The sum of n terms in the one order; term(k, V{}) gives as many terms from k on as V has
// elements.
template <class Term>
MATRIX_INLINE double sum_of(Index n, Term term) {
  Lanes lanes = {};
  Index whole = 0;
  for (; whole + kLanes <= n; whole += kLanes)
    for (int i = 0; i < kParts; ++i) lanes.part[i] += term(whole + i * kWidth, Vector{});
  double sums[kLanes];
  store_lanes(sums, lanes);
  over_elements(whole, n, [&]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    double* const sum = sums + (k - whole);
    store(sum, load<V>(sum) + term(k, V{}));
  });
  return join(sums);
}

}  // namespace

}  // namespace matrix_pack::MATRIX_KERNEL_SET
