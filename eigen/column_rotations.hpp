// Sweeps of plane rotations, kept back and applied to the columns of a matrix in batches, so that
// every block of rows goes through many sweeps while it is in cache. Every element sees the same
// operations in the same order as if each rotation were applied at once.
#pragma once

#include <cstddef>

#include "eigen/column_rotation_kernels.hpp"
#include "pack/memory.hpp"

namespace matrix_pack {

struct ColumnRotations {
  // For the columns of the rows x n array z. False when there is no memory.
  bool open(double* columns, std::ptrdiff_t leading_dimension, int row_count, int n);

  // Room for the rotations of one sweep, which the caller fills in before the next call: rotation
  // i, of columns i and i+1, has its cosine at [2 (i - first)] and its sine behind it. The sweep
  // goes from i = last down to first.
  double* sweep(std::ptrdiff_t first, std::ptrdiff_t last);

  // Applies what is kept back.
  void flush();

  static constexpr int kMostSweeps = 64;

  double* z;
  std::ptrdiff_t ld;
  std::ptrdiff_t rows;
  Doubles pairs;
  std::ptrdiff_t capacity;  // Of pairs, in rotations.
  std::ptrdiff_t used;
  int count;
  RotationSweep sweeps[kMostSweeps];
};

}  // namespace matrix_pack
