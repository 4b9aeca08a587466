// A copy of a matrix to compute in: its columns begin with cache lines and do not displace each
// other. For real and complex matrices.
#pragma once

#include "pack/memory.hpp"
#include "pack/numeric/copy_columns.hpp"
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

// A matrix stays where it is if it has few rows, which are in the first caches wherever they stand,
// or so many elements that it waits for memory all the time.
template <class View>
struct SpreadCopy {
  static constexpr Index kFewestRows = 100;
  static constexpr Index kMostElements = Index{1} << 23;

  // False when there is no memory.
  bool make(Index rows, Index cols, const View& matrix) {
    view = matrix;
    if (rows < kFewestRows || rows * cols > kMostElements) return true;
    constexpr int kParts = kPartsOf<View>;
    const Index ld = spread_distance(rows);
    room = new_doubles(kParts * cols * ld + kLine);
    if (!room) return false;
    double* const start = line_start(room.get());
    if constexpr (kParts == 1)
      view = {start, ld};
    else
      view = {start, start + cols * ld, ld};
    for (int p = 0; p < kParts; ++p) copy_columns(rows, cols, part(matrix, p), part(view, p));
    return true;
  }

  View view = {};
  Doubles room;  // Null where the view is the matrix itself.
};

}  // namespace matrix_pack
