#include "pack/numeric/rotation_batch.hpp"

#include <algorithm>

#include "pack/numeric/lines.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

RotationBatch::RotationBatch(Index row_count, RealView array, Index count, Rotation* room,
                             double* panel_work)
    : rows(row_count), columns(array), column_count(count), panel(panel_work) {
  kept.room = room;
  kept.capacity = kept_rotations(count);
}

// Calls body(row, rows, panel): a panel of rows from `row` on.
void RotationBatch::over_panels(const auto& body) const {
  RealView at = {line_start(panels.get()), kPanelRows};
  for (Index i = 0; i < rows; i += kPanelRows, at = at.from(0, column_count))
    body(i, std::min(kPanelRows, rows - i), at);
}

void RotationBatch::move_to_panels() {
  if (panels) return;
  const Index count = (rows + kPanelRows - 1) / kPanelRows;
  panels = new_doubles(count * kPanelRows * column_count + kLine);
  if (!panels) return;
  over_panels([&](Index row, Index height, RealView at) {
    for (Index k = 0; k < column_count; ++k) {
      double* const end = std::copy_n(columns.from(row, k).x, height, at.column(k));
      std::fill(end, at.column(k + 1), 0.0);
    }
  });
}

Rotation* RotationBatch::sweep(Index first, Index length) {
  if (kept.is_full(length)) {
    move_to_panels();
    apply();
  }
  Rotation* const place = kept.add(length);
  kept.sweeps[kept.count - 1] = {first, length, place, nullptr};
  return place;
}

void RotationBatch::rotate(Index p, Index q, const Rotation& rotation) {
  apply();
  const auto rotate_rows = [&](Index height, RealView x) {
    vector_kernels().rotate(height, rotation.c, rotation.s, x.column(p), x.column(q));
  };
  if (panels)
    over_panels([&](Index, Index height, RealView at) { rotate_rows(height, at); });
  else
    rotate_rows(rows, columns);
}

void RotationBatch::apply() {
  const RotationKernels& kernels = rotation_kernels();
  if (kept.count > 0 && panels)
    kernels.rotate_panels(rows, column_count, line_start(panels.get()), kept.sweeps, kept.count,
                          false);
  else if (kept.count > 0)
    kernels.rotate(rows, columns, kept.sweeps, kept.count, panel);
  kept.clear();
}

void RotationBatch::finish() {
  apply();
  if (!panels) return;
  over_panels([&](Index row, Index height, RealView at) {
    for (Index k = 0; k < column_count; ++k)
      std::copy_n(at.column(k), height, columns.from(row, k).x);
  });
  panels.reset();
}

}  // namespace matrix_pack
