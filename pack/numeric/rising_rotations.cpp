#include "pack/numeric/rising_rotations.hpp"

namespace matrix_pack {

namespace {

// Sweeps of full length that are kept back: a batch of them takes about as much cache as the block
// of rows that goes through it.
constexpr std::int64_t kFullSweeps = 32;

}  // namespace

bool RisingRotations::open(double* columns, Index leading_dimension, int row_count,
                           int column_count) {
  n = column_count;
  ld = leading_dimension;
  last_column = columns + (n - 1) * ld;
  rows = row_count;
  used = 0;
  count = 0;
  work = new_doubles(panel_size(n) + 2 * kFullSweeps * n);
  if (work == nullptr) return false;
  rotations = reinterpret_cast<Rotation*>(work.get() + panel_size(n));
  return true;
}

Rotation* RisingRotations::sweep(Index first, Index last) {
  const Index length = last - first + 1;
  if (count == kMostSweeps || used + length > kFullSweeps * n) flush();
  Rotation* const place = rotations + used;
  // Counted from the last column up.
  sweeps[count++] = {n - 2 - last, length, place};
  used += length;
  return place;
}

void RisingRotations::flush() {
  if (count > 0) rotation_kernels().turn(rows, last_column, -ld, sweeps, count, work.get());
  count = 0;
  used = 0;
}

}  // namespace matrix_pack
