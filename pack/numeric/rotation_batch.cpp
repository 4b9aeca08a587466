#include "pack/numeric/rotation_batch.hpp"

namespace matrix_pack {

RotationBatch::RotationBatch(Index row_count, RealView array, Index column_count, Rotation* room,
                             double* panel_work)
    : rows(row_count), columns(array), panel(panel_work) {
  kept.room = room;
  kept.capacity = kept_rotations(column_count);
}

Rotation* RotationBatch::sweep(Index first, Index length) {
  if (kept.is_full(length)) apply();
  Rotation* const place = kept.add(length);
  kept.sweeps[kept.count - 1] = {first, length, place, nullptr};
  return place;
}

void RotationBatch::apply() {
  if (kept.count > 0) rotation_kernels().rotate(rows, columns, kept.sweeps, kept.count, panel);
  kept.clear();
}

}  // namespace matrix_pack
