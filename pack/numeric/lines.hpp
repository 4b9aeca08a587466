// Where arrays begin and how far apart columns are, so that vectors are whole cache lines. For
// cores and kernels alike.
#pragma once

#include "pack/numeric/always_inline.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

namespace {

// Doubles of a cache line.
constexpr Index kLine = 8;

// How many doubles from p on come before a cache line: fewer than kLine.
MATRIX_INLINE Index before_line(const double* p) {
  const auto address = reinterpret_cast<__UINTPTR_TYPE__>(p);
  return -static_cast<Index>(address / sizeof(double)) & (kLine - 1);
}

// The first place from p on, fewer than kLine doubles further, that begins a cache line.
MATRIX_INLINE double* line_start(double* p) {
  return p + before_line(p);
}

// The same, but that is where q is in its line.
MATRIX_INLINE double* as_in_line(double* p, const double* q) {
  return p + ((before_line(p) - before_line(q)) & (kLine - 1));
}

// A distance for columns of n doubles: whole lines, and an odd number of them, since columns that
// are powers of two apart displace each other from the caches.
MATRIX_INLINE Index spread_distance(Index n) {
  return ((n + kLine - 1) / kLine | 1) * kLine;
}

}  // namespace

}  // namespace matrix_pack
