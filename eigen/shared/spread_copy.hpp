// A copy of a matrix for the reductions and iterations of eigenvalues, whose columns begin with
// cache lines and do not displace each other. For real and complex matrices.
#pragma once

#include <algorithm>

#include "pack/memory.hpp"
#include "pack/numeric/lines.hpp"

namespace matrix_pack {

// Real numbers of an element.
template <class View>
inline constexpr int kPartsOf = std::is_same_v<View, ComplexView> ? 2 : 1;

// The real (0) or the imaginary part (1) of a view.
inline RealView part(RealView view, int) {
  return view;
}
inline RealView part(const ComplexView& view, int p) {
  return {p == 0 ? view.re : view.im, view.ld};
}

inline void copy_columns(Index rows, Index cols, ConstRealView from, RealView to) {
  for (Index k = 0; k < cols; ++k) std::copy_n(from.column(k), rows, to.column(k));
}

template <class View>
struct SpreadCopy {
  // Smaller matrices are in the first caches wherever they stand: they serve as their own copy.
  static constexpr Index kSmallest = 100;
  static constexpr int kParts = kPartsOf<View>;

  // Of an n x n matrix. False when there is no memory.
  bool make(Index n, const View& matrix) {
    view = matrix;
    if (n < kSmallest) return true;
    const Index ld = spread_distance(n);
    room = new_doubles(kParts * n * ld + kLine);
    if (!room) return false;
    double* const start = line_start(room.get());
    if constexpr (kParts == 1)
      view = {start, ld};
    else
      view = {start, start + n * ld, ld};
    for (int p = 0; p < kParts; ++p) copy_columns(n, n, part(matrix, p), part(view, p));
    return true;
  }

  View view = {};

  Doubles room;
};

}  // namespace matrix_pack
