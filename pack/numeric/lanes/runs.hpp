// Runs of doubles one below the other, of any power of two, in vectors as wide as the instruction
// set and the run allow. Included by *_kernels.cpp only; local to each file, as
// pack/numeric/lanes/lanes.hpp is.
//
// Loops over runs end with one that overlaps the run before it, where those of over_elements in
// lanes.hpp end with ever smaller vectors. That is more to think of, and worth it in the LU
// factorizations alone: real matrices of 8 to 30 rows take 5 to 10 % less time.
#pragma once

#include "pack/numeric/lanes/lanes.hpp"
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
  static constexpr int kHeight = H;
  static constexpr int kVectorWidth = H < kWidth ? H : kWidth;
  static constexpr int kVectors = H / kVectorWidth;
  using V = typename VectorOf<kVectorWidth>::Type;
  V part[kVectors];
};

template <class R>
requires(R::kHeight > 0) MATRIX_INLINE R load(const double* p) {
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

// Complex runs.
template <class R>
MATRIX_INLINE ComplexOf<R> load(ConstComplexView p) {
  return {load<R>(p.re), load<R>(p.im)};
}

template <int H>
MATRIX_INLINE void store(ComplexView p, const ComplexOf<Run<H>>& run) {
  store(p.re, run.re);
  store(p.im, run.im);
}

template <int H>
MATRIX_INLINE ComplexOf<Run<H>> minus_multiple(ComplexOf<Run<H>> y, const ComplexOf<Run<H>>& x,
                                               Complex factor) {
  MATRIX_UNROLL
  for (int v = 0; v < Run<H>::kVectors; ++v) {
    y.re.part[v] -= x.re.part[v] * factor.re - x.im.part[v] * factor.im;
    y.im.part[v] -= x.re.part[v] * factor.im + x.im.part[v] * factor.re;
  }
  return y;
}

// Calls body(R()) with the highest run R, of 8, 4, 2 or 1, that n rows hold; not at all when n is
// 0.
template <class Body>
MATRIX_INLINE void with_runs(Index n, Body body) {
  if (n >= 8)
    body(Run<8>());
  else if (n >= 4)
    body(Run<4>());
  else if (n >= 2)
    body(Run<2>());
  else if (n == 1)
    body(Run<1>());
}

// p[i...] := f(i) for runs R that cover 0 to n - 1. The last two runs may overlap: the last one is
// computed before anything is stored, so f may read what is stored to.
template <class R, class Array, class Function>
MATRIX_INLINE void map_runs(Index n, Array p, Function f) {
  const auto last = f(n - R::kHeight);
  for (Index i = 0; i + R::kHeight < n; i += R::kHeight) store(p + i, f(i));
  store(p + (n - R::kHeight), last);
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
template <class Column, class View>
MATRIX_INLINE void subtract_rank_one(Index n, Index cols, Column multipliers, View row, View a) {
  with_runs(n, [=]<class R>(R) {
    for (Index j = 0; j < cols; ++j) {
      const auto column = a.column(j);
      const auto factor = row(0, j);
      map_runs<R>(n, column, [=](Index i) {
        return minus_multiple(load<R>(column + i), load<R>(multipliers + i), factor);
      });
    }
  });
}

}  // namespace

}  // namespace matrix_pack::MATRIX_KERNEL_SET
