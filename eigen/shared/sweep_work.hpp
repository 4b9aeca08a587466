// What the sweeps of a QR iteration work on: a Hessenberg matrix H, and the columns of Z, which
// wait for several sweeps. So do, when there is Z, the columns of H behind the active block, which
// no sweep reads. They go through all sweeps in panels: Z stands in panels of some rows until the
// end, columns of H are copied into one, transposed. For the real and for the complex iteration.
#pragma once

#include <algorithm>

#include "eigen/shared/balance.hpp"
#include "pack/memory.hpp"
#include "pack/numeric/batch.hpp"
#include "pack/numeric/moderate.hpp"
#include "pack/numeric/spread_copy.hpp"
#include "pack/numeric/transpose_kernels.hpp"

namespace matrix_pack {

// Rows of a panel, and the smallest order of a matrix that takes one.
inline constexpr Index kPanelHeight = 32;
inline constexpr int kSmallestWithPanels = 100;

template <class View, class Sweep, class Transformation>
struct SweepWorkOf {
  // Full sweeps that Z may wait for, without a panel and with one.
  static constexpr Index kFullSweeps = 16;
  static constexpr Index kFullSweepsWithPanel = 32;
  static constexpr int kParts = kPartsOf<View>;

  // Without Z, only the active block of H is kept up to date. False when there is no memory.
  bool open(int order, const View& hessenberg) {
    n = order;
    h = hessenberg;
    return reserve(n);
  }
  // Z takes part in rows low..high.
  bool open_with_vectors(const Balance& b, const View& hessenberg, const View& vectors) {
    n = b.n;
    h = hessenberg;
    has_z = true;
    z = vectors;
    z_begin = b.low;
    z_end = b.high + 1;
    behind = n;
    if (n < kSmallestWithPanels) return reserve(kFullSweeps * n);
    // Where nothing can overflow, no fault tells that columns have waited.
    h_waits = true;
    for (int p = 0; p < kParts; ++p) h_waits &= are_moderate(n, n, part(h, p));
    const Index panels = 1 + (z_end - z_begin + kPanelHeight - 1) / kPanelHeight;
    panel_room = new_doubles(panels * panel_size() + kLine);
    if (!panel_room || !reserve(kFullSweepsWithPanel * n)) return false;
    over_z_panels([&](Index row, Index rows, const View& panel) {
      for (int p = 0; p < kParts; ++p)
        copy_columns(rows, n, part(z, p).from(row, 0), part(panel, p));
    });
    return true;
  }
  // Z as it is after all sweeps that are not kept back.
  void return_z() const {
    if (!panel_room) return;
    over_z_panels([&](Index row, Index rows, const View& panel) {
      for (int p = 0; p < kParts; ++p)
        copy_columns(rows, n, part(panel, p), part(z, p).from(row, 0));
    });
  }

  // How far what is kept up to date reaches: upwards of the active block first..last, and to its
  // right.
  int first_row(int first) const { return has_z ? 0 : first; }
  int last_column(int last) const { return has_z ? behind - 1 : last; }

  // Before a sweep that ends with row `last`: those behind it that wait for a batch wait for all of
  // it.
  void begin_batch(int last) {
    if (kept.count == 0) behind = h_waits ? last + 1 : n;
  }

  Array<Transformation> room;
  Batch<Sweep, Transformation> kept;
  int n = 0;
  View h = {};
  bool has_z = false;
  View z = {};
  int z_begin = 0;
  int z_end = 0;
  // The panel of the columns of H, then those of Z; null for small matrices.
  Doubles panel_room;
  bool h_waits = false;
  int behind = 0;  // The first column of H that waits.

  bool reserve(Index transformations) {
    room = new_array<Transformation>(transformations);
    kept.room = room.get();
    kept.capacity = transformations;
    return room != nullptr;
  }

  Index panel_size() const { return kParts * kPanelHeight * n; }
  // From `start` on.
  View panel_at(double* start) const {
    if constexpr (kParts == 1)
      return {start, kPanelHeight};
    else
      return {start, start + kPanelHeight * n, kPanelHeight};
  }

  // Calls apply(row, rows, panel) for the panels of Z.
  void over_z_panels(const auto& apply) const {
    double* start = line_start(panel_room.get());
    for (Index i = z_begin; i < z_end; i += kPanelHeight) {
      start += panel_size();
      apply(i, std::min<Index>(kPanelHeight, z_end - i), panel_at(start));
    }
  }

  // Rows first..last of the columns of H that wait, transposed, to the panel and back;
  // apply(panel) in between. Of the panel all rows are numbers.
  void over_waiting_columns(Index first, Index last, const auto& apply) const {
    const Index rows = last + 1 - first;
    const View panel = panel_at(line_start(panel_room.get()));
    for (Index j = behind; j < n; j += kPanelHeight) {
      const Index cols = std::min<Index>(kPanelHeight, n - j);
      if (cols < kPanelHeight) std::fill_n(part(panel, 0).x, panel_size(), 0.0);
      for (int p = 0; p < kParts; ++p)
        transpose_kernels().transpose(rows, cols, part(h, p).from(first, j),
                                      part(panel, p).from(0, first));
      apply(panel);
      for (int p = 0; p < kParts; ++p)
        transpose_kernels().transpose(cols, rows, part(panel, p).from(0, first),
                                      part(h, p).from(first, j));
    }
  }
};

}  // namespace matrix_pack
