// Plane rotations of the neighbouring columns of a real array, kept back.
#pragma once

#include "pack/memory.hpp"
#include "pack/numeric/batch.hpp"
#include "pack/numeric/rotation_kernels.hpp"

namespace matrix_pack {

// Rotations to keep back for an array of so many columns: those of 32 full sweeps take about as
// much cache as the block of rows that goes through them.
constexpr Index kept_rotations(Index columns) {
  return 32 * columns;
}

struct RotationBatch {
  // Of an array of `row_count` rows. With a negative distance the columns are counted from the last
  // one down, for sweeps that rise. `room` has space for kept_rotations, `panel` for panel_size of
  // the number of columns.
  RotationBatch(Index row_count, RealView array, Index column_count, Rotation* room, double* panel);

  // Room for the rotations of one sweep, which the caller fills in before the next call: rotation j
  // is of columns first + j and first + j + 1.
  Rotation* sweep(Index first, Index length);
  // Rotates any two columns at once.
  void rotate(Index p, Index q, const Rotation& rotation);
  // Applies what is kept back. Only then is the array up to date.
  void finish();

  Index rows;
  RealView columns;
  Index column_count;
  double* panel;
  Batch<Sweep, Rotation> kept;
  // Once there have been more rotations than are kept back, the array stands in panels of its rows
  // until the end. It stays where it is if there is no memory for them, or if it has so few
  // elements that they are in the first cache anyway.
  static constexpr Index kFewElements = 4096;
  Doubles panels;

  void apply();
  void move_to_panels();
};

}  // namespace matrix_pack
