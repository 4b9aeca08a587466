// Where arrays begin and how far apart columns are, so that vectors are whole cache lines. For
// cores and kernels alike.
#pragma once

#include "pack/numeric/always_inline.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

namespace {

// Doubles of a cache line.
constexpr Index kLine = 8;

// The first cache line that begins in p or behind: fewer than kLine doubles further.
MATRIX_INLINE double* line_start(double* p) {
  constexpr __UINTPTR_TYPE__ kBytes = kLine * sizeof(double);
  const auto address = reinterpret_cast<__UINTPTR_TYPE__>(p);
  return p + (kBytes - address % kBytes) % kBytes / sizeof(double);
}

// A distance for columns of n doubles: whole lines, and an odd number of them, since columns that
// are powers of two apart displace each other from the caches.
MATRIX_INLINE Index spread_distance(Index n) {
  return ((n + kLine - 1) / kLine | 1) * kLine;
}

}  // namespace

}  // namespace matrix_pack
