#include "eigen/column_rotations.hpp"

namespace matrix_pack {

namespace {

// Sweeps of full length that are kept back: a batch of them takes about as much cache as the block
// of rows that goes through it.
constexpr std::int64_t kFullSweeps = 32;

}  // namespace

bool ColumnRotations::open(double* columns, std::ptrdiff_t leading_dimension, int row_count,
                           int n) {
  z = columns;
  ld = leading_dimension;
  rows = row_count;
  capacity = kFullSweeps * n;
  used = 0;
  count = 0;
  pairs = new_doubles(2 * kFullSweeps * n);
  return pairs != nullptr;
}

double* ColumnRotations::sweep(std::ptrdiff_t first, std::ptrdiff_t last) {
  const std::ptrdiff_t length = last - first + 1;
  if (count == kMostSweeps || used + length > capacity) flush();
  double* const place = pairs.get() + 2 * used;
  sweeps[count++] = {first, last, place};
  used += length;
  return place;
}

void ColumnRotations::flush() {
  column_rotation_kernels().rotate(count, sweeps, rows, z, ld);
  count = 0;
  used = 0;
}

}  // namespace matrix_pack
