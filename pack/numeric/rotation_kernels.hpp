// Plane rotations of the neighbouring columns of a column-major array.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// A plane rotation: (x, y) becomes (c x + s y, c y - s x).
struct Rotation {
  double c;
  double s;
};

// Where a column begins: above row `reach` all elements are equal to `above`, and are not stored.
struct Edge {
  Index reach;
  double above;
};

// The rotations of one sweep, in order: rotations[j - first] is that of columns j and j + 1, for
// first <= j < first + count. Where columns are not stored whole, `edges` holds the edges of the
// columns from `first` on, count + 1 of them: that of column j as it is when its rotation with
// column j + 1 comes. Their reaches do not increase. A rotation gives both of its columns the
// lesser reach; what is above is the owner's to keep, and at last to store.
struct Sweep {
  Index first;
  Index count;
  const Rotation* rotations;
  const Edge* edges;
};
// The most sweeps in one call when columns are not stored whole.
inline constexpr Index kMostEdgedSweeps = 64;

// The doubles of work that `rotate` needs for sweeps over so many columns: a panel of rows, which
// begins with a cache line.
inline constexpr Index kPanelRows = 32;
inline constexpr Index panel_size(Index columns) {
  return kPanelRows * columns + 8;
}

struct RotationKernels {
  // The sweeps, one after the other, on the columns of an array of `rows` rows. `work` is room of
  // panel_size of the columns between the first and the last that takes part; one sweep alone does
  // without. Columns that are counted from the last one down have a negative distance.
  void (*rotate)(Index rows, RealView a, const Sweep* sweeps, Index sweep_count, double* work);

  // The same for an array of `cols` columns in panels of kPanelRows rows, one panel behind the
  // other: in a panel the elements of a column lie side by side, column after column. The last
  // panel, too, has all of its rows. With `edged` the columns are not stored whole.
  void (*rotate_panels)(Index rows, Index cols, double* panels, const Sweep* sweeps,
                        Index sweep_count, bool edged);
};
MATRIX_SELECT_KERNELS(RotationKernels, rotation_kernels)

}  // namespace matrix_pack
