// Sweeps of plane rotations that rise from the last columns to the first, kept back and applied in
// batches, so that every block of rows goes through many sweeps while it is in cache. Every element
// sees the same operations in the same order as if each rotation were applied at once.
#pragma once

#include "pack/memory.hpp"
#include "pack/numeric/rotation_kernels.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

struct RisingRotations {
  // For the columns of the rows x n array `columns`. False when there is no memory.
  bool open(double* columns, Index leading_dimension, int row_count, int column_count);

  // Room for the rotations of one sweep, which the caller fills in before the next call: the first
  // turns columns last + 1 and last, in this order, and so on up to columns first + 1 and first.
  Rotation* sweep(Index first, Index last);

  // Applies what is kept back.
  void flush();

  static constexpr int kMostSweeps = 64;

  double* last_column;
  Index ld;
  Index rows;
  Index n;
  Doubles work;  // A panel of rows, then rotations.
  Rotation* rotations;
  Index used;
  int count;
  Sweep sweeps[kMostSweeps];
};

}  // namespace matrix_pack
