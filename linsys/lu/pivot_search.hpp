// The search for a pivot. Included by *_kernels.cpp only; local to each file, as
// pack/numeric/lanes/lanes.hpp is.
#pragma once

#include "pack/numeric/lanes/lanes.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

struct Candidate {
  double weight;
  Index row;
};

// Which one of equally heavy candidates wins. Documented, and not the same for both kinds of
// matrices: hosts rely on it.
enum class Tie { last, first };
constexpr Tie kRealTie = Tie::last;
constexpr Tie kComplexTie = Tie::first;

MATRIX_INLINE VectorBits rows_from(Index first) {
  VectorBits rows;
  for (int q = 0; q < kWidth; ++q) rows[q] = q;
  return rows + first;
}

// Lane q of the result is lane q ^ w of x.
template <int w, class V>
MATRIX_INLINE V with_partner(V x) {
  if constexpr (kWidth == 8)
    return __builtin_shufflevector(x, x, 0 ^ w, 1 ^ w, 2 ^ w, 3 ^ w, 4 ^ w, 5 ^ w, 6 ^ w, 7 ^ w);
  else if constexpr (kWidth == 4)
    return __builtin_shufflevector(x, x, 0 ^ w, 1 ^ w, 2 ^ w, 3 ^ w);
  else
    return __builtin_shufflevector(x, x, 0 ^ w, 1 ^ w);
}

// Each lane takes its partner's candidate where that wins.
template <Tie tie, int w>
MATRIX_INLINE void meet(Vector& weights, VectorBits& rows) {
  const Vector weight = with_partner<w>(weights);
  const VectorBits row = with_partner<w>(rows);
  VectorBits before;
  if constexpr (tie == Tie::last)
    before = row > rows;
  else
    before = row < rows;
  const VectorBits taken = (weight > weights) | ((weight == weights) & before);
  weights = taken ? weight : weights;
  rows = taken ? row : rows;
}

// The heaviest of `best` and n rows after it, from `first` on: row first + i has the weight
// |x[i]| * scale[i]. A NaN never wins, and is never beaten.
template <Tie tie>
MATRIX_INLINE Candidate heaviest(Candidate best, Index first, Index n, const double* x,
                                 const double* scale) {
  if (n < kWidth) {
    for (Index i = 0; i < n; ++i) {
      const double weight = __builtin_fabs(x[i]) * scale[i];
      const bool taken = tie == Tie::last ? weight >= best.weight : weight > best.weight;
      best.row = taken ? first + i : best.row;
      best.weight = taken ? weight : best.weight;
    }
    return best;
  }
  // Each lane keeps a candidate of its own, starting with `best`.
  Vector weights = best.weight - Vector{};
  VectorBits rows = best.row - VectorBits{};
  const auto take = [&](Index i) {
    const Vector weight = magnitude(load_vector(x + i)) * load_vector(scale + i);
    VectorBits taken;
    if constexpr (tie == Tie::last)
      taken = weight >= weights;
    else
      taken = weight > weights;
    weights = taken ? weight : weights;
    rows = taken ? rows_from(first + i) : rows;
  };
  for (Index i = 0; i + kWidth < n; i += kWidth) take(i);
  take(n - kWidth);  // Rows that come twice do no harm.
  if constexpr (kWidth > 4) meet<tie, 4>(weights, rows);
  if constexpr (kWidth > 2) meet<tie, 2>(weights, rows);
  meet<tie, 1>(weights, rows);
  return {weights[0], static_cast<Index>(rows[0])};
}

}  // namespace

}  // namespace matrix_pack::MATRIX_KERNEL_SET
