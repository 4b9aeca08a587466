// Rows of a column-major matrix in vectors: square tiles are loaded by columns, transposed in
// registers and stored by columns. Included by *_kernels.cpp only, like
// pack/numeric/lanes/lanes.hpp.
#pragma once

#include "pack/numeric/lanes/lanes.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Columns that go side by side through the transformations of rows: a vector holds one row of them.
// (Eight are no faster than four: it takes more exchanges of lanes to transpose them.)
#if defined(__AVX__)
constexpr int kSide = 4;
#else
constexpr int kSide = 2;
#endif
typedef double Row __attribute__((vector_size(8 * kSide)));

template <class V>
constexpr int kLanesOf = sizeof(V) / sizeof(double);

template <int... K>
struct Indices {};
#if defined(__AVX__)
using SideIndices = Indices<0, 1, 2, 3>;
#else
using SideIndices = Indices<0, 1>;
#endif

// Exchanges the blocks of S lanes in which bit S of the vector's number and of the lane's differ.
template <int S, int... K>
MATRIX_INLINE void exchange(Row& a, Row& b, Indices<K...>) {
  const Row low = __builtin_shufflevector(a, b, ((K & S) != 0 ? kSide + K - S : K)...);
  b = __builtin_shufflevector(a, b, ((K & S) != 0 ? kSide + K : K + S)...);
  a = low;
}

// Rows become columns, and columns rows.
template <int S>
MATRIX_INLINE void transpose(Row* tile) {
  if constexpr (S < kSide) {
    for (int i = 0; i < kSide; ++i)
      if ((i & S) == 0) exchange<S>(tile[i], tile[i + S], SideIndices());
    transpose<2 * S>(tile);
  }
}
template <int S>
MATRIX_INLINE void transpose(double*) {}

// A square tile of a matrix, in registers: vector i is row i.
template <class V>
struct Tile {
  V row[kLanesOf<V>];
};

#if defined(__AVX__)
typedef double HalfRow __attribute__((vector_size(16)));

// Two halves, the upper one from memory. (gcc loads it into a register first if not told, and then
// shuffles; clang knows no such function, and needs none.)
MATRIX_INLINE Row load_halves(const double* low, const double* high) {
#if defined(__clang__)
  return __builtin_shufflevector(load<HalfRow>(low), load<HalfRow>(high), 0, 1, 2, 3);
#else
  const Row row = __builtin_ia32_pd256_pd(load<HalfRow>(low));
  return __builtin_ia32_vinsertf128_pd256(row, load<HalfRow>(high), 1);
#endif
}
#endif

// Two rows of kSide columns. (Where a vector has two halves, each one is loaded for itself: that
// takes the place of the exchange of halves, which costs more.)
MATRIX_INLINE void load_two_rows(const double* x, Index ld, Row* row) {
  for (int j = 0; j < 2; ++j)
#if defined(__AVX__)
    row[j] = load_halves(x + j * ld, x + (j + 2) * ld);
#else
    row[j] = load<Row>(x + j * ld);
#endif
  exchange<1>(row[0], row[1], SideIndices());
}

template <class V>
MATRIX_INLINE Tile<V> load_tile(const double* x, Index ld) {
  Tile<V> tile;
  if constexpr (kLanesOf<V> == 1)
    tile.row[0] = *x;
  else
    for (int i = 0; i < kSide; i += 2) load_two_rows(x + i, ld, tile.row + i);
  return tile;
}

template <class V>
MATRIX_INLINE void store_tile(double* x, Index ld, Tile<V> tile) {
  transpose<1>(tile.row);
  for (int j = 0; j < kLanesOf<V>; ++j) store(x + j * ld, tile.row[j]);
}

template <class V>
MATRIX_INLINE V load_row(const double* x, Index ld) {
  if constexpr (kLanesOf<V> == 1) {
    return *x;
  } else {
    V row = {};
    for (int j = 0; j < kLanesOf<V>; ++j) row[j] = x[j * ld];
    return row;
  }
}
MATRIX_INLINE void store_row(double* x, Index ld, Row row) {
  for (int j = 0; j < kSide; ++j) x[j * ld] = row[j];
}
MATRIX_INLINE void store_row(double* x, Index, double row) {
  *x = row;
}

// G vectors of columns side by side.
template <class V, int G>
struct Columns {};

// Calls body(j, Columns<V, G>()) for groups of columns from j on that together cover begin...end:
// of as many columns as there are, then of fewer.
template <int G, class Body>
MATRIX_INLINE void over_columns(Index begin, Index end, Body body) {
  Index j = begin;
  for (; j + G * kSide <= end; j += G * kSide) body(j, Columns<Row, G>());
  if constexpr (G > 1) {
    for (; j + kSide <= end; j += kSide) body(j, Columns<Row, 1>());
    for (; j + G <= end; j += G) body(j, Columns<double, G>());
  }
  for (; j < end; ++j) body(j, Columns<double, 1>());
}

// Transformations of rows that go down the columns, which begin at x[0], x[1]...: number i acts on
// the rows i...i + kCarried. The rows that it shares with the next one stay in registers, and none
// of the columns waits for another.
//   apply(i, carried, row)   makes of the rows carried, carried[a] for x[a], and the next one,
//                            row[a], the row that is done, row[a], and those to be carried on
//   finish(carried)          sees the rows that are left before they are stored
template <class V, int kCarried, int kArrays, class Apply, class Finish>
MATRIX_INLINE void carry_rows(Index count, double* const (&x)[kArrays], Index ld, Apply apply,
                              Finish finish) {
  constexpr int kHere = kLanesOf<V>;
  V carried[kArrays][kCarried];
  for (int a = 0; a < kArrays; ++a)
    for (int c = 0; c < kCarried; ++c) carried[a][c] = load_row<V>(x[a] + c, ld);
  Index i = 0;
  for (; i + kHere <= count; i += kHere) {
    Tile<V> tile[kArrays];
    for (int a = 0; a < kArrays; ++a) tile[a] = load_tile<V>(x[a] + i + kCarried, ld);
    for (int m = 0; m < kHere; ++m) {
      V row[kArrays];
      for (int a = 0; a < kArrays; ++a) row[a] = tile[a].row[m];
      apply(i + m, carried, row);
      for (int a = 0; a < kArrays; ++a) tile[a].row[m] = row[a];
    }
    for (int a = 0; a < kArrays; ++a) store_tile(x[a] + i, ld, tile[a]);
  }
  for (; i < count; ++i) {
    V row[kArrays];
    for (int a = 0; a < kArrays; ++a) row[a] = load_row<V>(x[a] + i + kCarried, ld);
    apply(i, carried, row);
    for (int a = 0; a < kArrays; ++a) store_row(x[a] + i, ld, row[a]);
  }
  finish(carried);
  for (int a = 0; a < kArrays; ++a)
    for (int c = 0; c < kCarried; ++c) store_row(x[a] + count + c, ld, carried[a][c]);
}

template <class V, int kCarried, int kArrays, class Apply>
MATRIX_INLINE void carry_rows(Index count, double* const (&x)[kArrays], Index ld, Apply apply) {
  carry_rows<V, kCarried>(count, x, ld, apply, [](auto&) MATRIX_INLINE_LAMBDA {});
}

}  // namespace

}  // namespace matrix_pack::MATRIX_KERNEL_SET
