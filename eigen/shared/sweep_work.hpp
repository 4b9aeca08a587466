// What the sweeps of a QR iteration work on: a Hessenberg matrix H, and the columns of Z, which
// wait for several sweeps. So do, when there is Z, the columns of H behind the active block, which
// no sweep reads. Some rows of Z, or columns of H, transposed, are copied into a panel and go
// through all sweeps there. For the real and for the complex iteration.
#pragma once

#include <algorithm>

#include "eigen/shared/balance.hpp"
#include "pack/memory.hpp"
#include "pack/numeric/batch.hpp"
#include "pack/numeric/moderate.hpp"
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
  // Real numbers of an element.
  static constexpr Index kParts = std::is_same_v<View, ComplexView> ? 2 : 1;

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
    panel = new_doubles(kParts * kPanelHeight * n);
    // Where nothing can overflow, no fault tells that columns have waited.
    h_waits = true;
    for (int p = 0; p < kParts; ++p) h_waits &= are_moderate(n, n, part(h, p));
    return panel != nullptr && reserve(kFullSweepsWithPanel * n);
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
  Doubles panel;  // Null for small matrices.
  bool h_waits = false;
  int behind = 0;  // The first column of H that waits.

  bool reserve(Index transformations) {
    room = new_array<Transformation>(transformations);
    kept.room = room.get();
    kept.capacity = transformations;
    return room != nullptr;
  }

  // Columns first..last of Z, some rows at a time, to the panel and back; apply(rows) in between.
  void over_z(Index first, Index last, const auto& apply) const {
    for (Index i = z_begin; i < z_end; i += kPanelHeight) {
      const Index rows = std::min<Index>(kPanelHeight, z_end - i);
      for (int p = 0; p < kParts; ++p)
        copy_columns(rows, last + 1 - first, part(z, p).from(i, first), panel_from(p, first));
      apply(rows);
      for (int p = 0; p < kParts; ++p)
        copy_columns(rows, last + 1 - first, panel_from(p, first), part(z, p).from(i, first));
    }
  }

  // Rows first..last of the columns of H that wait, transposed, to the panel and back. Of the panel
  // all rows are numbers.
  void over_waiting_columns(Index first, Index last, const auto& apply) const {
    const Index rows = last + 1 - first;
    for (Index j = behind; j < n; j += kPanelHeight) {
      const Index cols = std::min<Index>(kPanelHeight, n - j);
      if (cols < kPanelHeight) std::fill_n(panel.get(), kParts * kPanelHeight * n, 0.0);
      for (int p = 0; p < kParts; ++p)
        transpose_kernels().transpose(rows, cols, part(h, p).from(first, j), panel_from(p, first));
      apply();
      for (int p = 0; p < kParts; ++p)
        transpose_kernels().transpose(cols, rows, panel_from(p, first), part(h, p).from(first, j));
    }
  }

  // One part of a view, and of the panel from column `first` on.
  static RealView part(const View& view, int p) {
    if constexpr (kParts == 1)
      return view;
    else
      return {p == 0 ? view.re : view.im, view.ld};
  }
  RealView panel_from(int p, Index first) const {
    return RealView{panel.get() + p * kPanelHeight * n, kPanelHeight}.from(0, first);
  }
  static void copy_columns(Index rows, Index cols, ConstRealView from, RealView to) {
    for (Index k = 0; k < cols; ++k) std::copy_n(from.column(k), rows, to.column(k));
  }
};

}  // namespace matrix_pack
