// Rows of a column-major matrix in vectors: square tiles are loaded by columns, turned in registers
// and stored by columns. Included by *_kernels.cpp only, like pack/numeric/lanes.hpp.
#pragma once

#include "pack/numeric/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Columns that go side by side through the transformations of rows: a vector holds one row of them.
// (Eight are no faster than four: it takes more exchanges of lanes to turn them.)
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
MATRIX_LANES_INLINE void exchange(Row& a, Row& b, Indices<K...>) {
  const Row low = __builtin_shufflevector(a, b, ((K & S) != 0 ? kSide + K - S : K)...);
  b = __builtin_shufflevector(a, b, ((K & S) != 0 ? kSide + K : K + S)...);
  a = low;
}

// Turns rows into columns, and columns into rows.
template <int S>
MATRIX_LANES_INLINE void turn(Row* tile) {
  if constexpr (S < kSide) {
    for (int i = 0; i < kSide; ++i)
      if ((i & S) == 0) exchange<S>(tile[i], tile[i + S], SideIndices());
    turn<2 * S>(tile);
  }
}
template <int S>
MATRIX_LANES_INLINE void turn(double*) {}

// A square tile of a matrix, in registers: vector i is row i.
template <class V>
struct Tile {
  V row[kLanesOf<V>];
};

template <class V>
MATRIX_LANES_INLINE Tile<V> load_tile(const double* x, std::ptrdiff_t ld) {
  Tile<V> tile;
  for (int j = 0; j < kLanesOf<V>; ++j) tile.row[j] = load<V>(x + j * ld);
  turn<1>(tile.row);
  return tile;
}

template <class V>
MATRIX_LANES_INLINE void store_tile(double* x, std::ptrdiff_t ld, Tile<V> tile) {
  turn<1>(tile.row);
  for (int j = 0; j < kLanesOf<V>; ++j) store(x + j * ld, tile.row[j]);
}

template <class V>
MATRIX_LANES_INLINE V load_row(const double* x, std::ptrdiff_t ld) {
  if constexpr (kLanesOf<V> == 1) {
    return *x;
  } else {
    V row = {};
    for (int j = 0; j < kLanesOf<V>; ++j) row[j] = x[j * ld];
    return row;
  }
}
MATRIX_LANES_INLINE void store_row(double* x, std::ptrdiff_t ld, Row row) {
  for (int j = 0; j < kSide; ++j) x[j * ld] = row[j];
}
MATRIX_LANES_INLINE void store_row(double* x, std::ptrdiff_t, double row) {
  *x = row;
}

}  // namespace

}  // namespace matrix_pack::MATRIX_KERNEL_SET
