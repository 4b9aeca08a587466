// Runs of doubles one below the other, of any power of two, in vectors as wide as the instruction
// set and the run allow. Included by *_kernels.cpp only; local to each file, as
// pack/numeric/lanes.hpp is.
#pragma once

#include "pack/numeric/lanes.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

#define MATRIX_UNROLL _Pragma("GCC unroll 16")

template <int W>
struct VectorOf {
  typedef double Type __attribute__((vector_size(8 * W)));
  typedef long long Bits __attribute__((vector_size(8 * W)));
};
template <>
struct VectorOf<1> {
  typedef double Type;
  typedef long long Bits;
};

template <int H>
struct Run {
  static constexpr int kVectorWidth = H < kWidth ? H : kWidth;
  static constexpr int kVectors = H / kVectorWidth;
  using V = typename VectorOf<kVectorWidth>::Type;
  V part[kVectors];
};

template <int H>
MATRIX_INLINE Run<H> load(const double* p) {
  using R = Run<H>;
  R run;
  MATRIX_UNROLL
  for (int v = 0; v < R::kVectors; ++v) run.part[v] = load<typename R::V>(p + v * R::kVectorWidth);
  return run;
}

template <int H>
MATRIX_INLINE void store(double* p, const Run<H>& run) {
  using R = Run<H>;
  MATRIX_UNROLL
  for (int v = 0; v < R::kVectors; ++v) store<typename R::V>(p + v * R::kVectorWidth, run.part[v]);
}

// y - x * factor
template <int H>
MATRIX_INLINE Run<H> minus_multiple(Run<H> y, const Run<H>& x, double factor) {
  MATRIX_UNROLL
  for (int v = 0; v < Run<H>::kVectors; ++v) y.part[v] -= x.part[v] * factor;
  return y;
}

template <int H>
MATRIX_INLINE Run<H> quotient(Run<H> x, double divisor) {
  MATRIX_UNROLL
  for (int v = 0; v < Run<H>::kVectors; ++v) x.part[v] = x.part[v] / divisor;
  return x;
}

template <int H>
MATRIX_INLINE Run<H> magnitudes(Run<H> x) {
  MATRIX_UNROLL
  for (int v = 0; v < Run<H>::kVectors; ++v) x.part[v] = magnitude(x.part[v]);
  return x;
}

// The larger one of each pair; a NaN in x is passed over.
template <int H>
MATRIX_INLINE Run<H> larger(Run<H> old, const Run<H>& x) {
  MATRIX_UNROLL
  for (int v = 0; v < Run<H>::kVectors; ++v)
    old.part[v] = x.part[v] > old.part[v] ? x.part[v] : old.part[v];
  return old;
}

// The larger one of each pair of magnitudes, by their bits: a NaN is larger than all numbers, and
// nothing faults.
template <int H>
MATRIX_INLINE Run<H> larger_bits(Run<H> old, const Run<H>& x) {
  using R = Run<H>;
  using Bits = typename VectorOf<R::kVectorWidth>::Bits;
  MATRIX_UNROLL
  for (int v = 0; v < R::kVectors; ++v) {
    const Bits bits = __builtin_bit_cast(Bits, x.part[v]);
    const Bits old_bits = __builtin_bit_cast(Bits, old.part[v]);
    old.part[v] = bits > old_bits ? x.part[v] : old.part[v];
  }
  return old;
}

template <int H>
MATRIX_INLINE double largest_of(const Run<H>& run) {
  double lanes[H];
  store(lanes, run);
  double largest = lanes[0];
  MATRIX_UNROLL
  for (int q = 1; q < H; ++q) largest = lanes[q] > largest ? lanes[q] : largest;
  return largest;
}

// Complex runs: the parts stand apart.
template <int H>
struct ComplexRun {
  Run<H> re;
  Run<H> im;
};

template <int H>
MATRIX_INLINE ComplexRun<H> load(ConstComplexView p) {
  return {load<H>(p.re), load<H>(p.im)};
}

template <int H>
MATRIX_INLINE void store(ComplexView p, const ComplexRun<H>& run) {
  store(p.re, run.re);
  store(p.im, run.im);
}

template <int H>
MATRIX_INLINE ComplexRun<H> minus_multiple(ComplexRun<H> y, const ComplexRun<H>& x,
                                           Complex factor) {
  MATRIX_UNROLL
  for (int v = 0; v < Run<H>::kVectors; ++v) {
    y.re.part[v] -= x.re.part[v] * factor.re - x.im.part[v] * factor.im;
    y.im.part[v] -= x.re.part[v] * factor.im + x.im.part[v] * factor.re;
  }
  return y;
}

template <int H>
struct Height {};

// Calls body(Height<H>()) with the largest H of 8, 4, 2 and 1 up to n; not at all when n is 0.
template <class Body>
MATRIX_INLINE void by_height(Index n, Body body) {
  if (n >= 8)
    body(Height<8>());
  else if (n >= 4)
    body(Height<4>());
  else if (n >= 2)
    body(Height<2>());
  else if (n == 1)
    body(Height<1>());
}

// p[i...] := f(i) for runs of H that cover 0 to n - 1, n >= H. The last two runs may overlap: the
// last one is computed before anything is stored, so f may read what is stored to.
template <int H, class Array, class Function>
MATRIX_INLINE void map_runs(Index n, Array p, Function f) {
  const auto last = f(n - H);
  for (Index i = 0; i + H < n; i += H) store(p + i, f(i));
  store(p + (n - H), last);
}

// Exchanges rows i and k of `cols` columns.
MATRIX_INLINE void exchange_rows(Index cols, RealView a, Index i, Index k) {
  for (Index j = 0; j < cols; ++j) {
    const double t = a(i, j);
    a(i, j) = a(k, j);
    a(k, j) = t;
  }
}
MATRIX_INLINE void exchange_rows(Index cols, ComplexView a, Index i, Index k) {
  exchange_rows(cols, RealView{a.re, a.ld}, i, k);
  exchange_rows(cols, RealView{a.im, a.ld}, i, k);
}

// Columns of `a`, n long, := columns - multipliers * row
template <class Vector, class View>
MATRIX_INLINE void subtract_rank_one(Index n, Index cols, Vector multipliers, View row, View a) {
  by_height(n, [=]<int H>(Height<H>) {
    for (Index j = 0; j < cols; ++j) {
      const auto column = a.column(j);
      const auto factor = row(0, j);
      map_runs<H>(n, column, [=](Index i) {
        return minus_multiple(load<H>(column + i), load<H>(multipliers + i), factor);
      });
    }
  });
}

}  // namespace

}  // namespace matrix_pack::MATRIX_KERNEL_SET
