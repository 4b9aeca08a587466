#include "pack/numeric/rotation_batch.hpp"

#include <algorithm>

#include "pack/numeric/copy_columns.hpp"
#include "pack/numeric/lines.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// Calls body(row, height, panel) for the panels: each of the rows from `row` on.
void over_panels(const RotationBatch& batch, const auto& body) {
  RealView panel = {line_start(batch.panels.get()), kPanelRows};
  for (Index i = 0; i < batch.rows; i += kPanelRows, panel = panel.from(0, batch.column_count))
    body(i, std::min(kPanelRows, batch.rows - i), panel);
}

}  // namespace

RotationBatch::RotationBatch(Index row_count, RealView array, Index count, Rotation* room,
                             double* panel_work)
    : rows(row_count), columns(array), column_count(count), panel(panel_work) {
  kept.room = room;
  kept.capacity = kept_rotations(count);
}

void RotationBatch::move_to_panels() {
  if (panels || rows * column_count <= kFewElements) return;
  const Index count = (rows + kPanelRows - 1) / kPanelRows;
  panels = new_doubles(count * kPanelRows * column_count + kLine);
  if (!panels) return;
  // The last panel, too, has all of its rows.
  std::fill_n(line_start(panels.get()) + (count - 1) * kPanelRows * column_count,
              kPanelRows * column_count, 0.0);
  over_panels(*this, [&](Index row, Index height, RealView at) {
    copy_columns(height, column_count, columns.from(row, 0), at);
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
    over_panels(*this, [&](Index, Index height, RealView at) { rotate_rows(height, at); });
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
  over_panels(*this, [&](Index row, Index height, RealView at) {
    copy_columns(height, column_count, at, columns.from(row, 0));
  });
  panels.reset();
}

}  // namespace matrix_pack
