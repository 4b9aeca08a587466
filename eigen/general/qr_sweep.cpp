#include "eigen/general/qr_sweep.hpp"

#include <algorithm>
#include <span>

#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// Reflectors found in one window: their columns stay in the first-level cache, and the few rows and
// columns beside the diagonal cost little.
constexpr int kWindow = 32;

// The longest sweep that goes without windows.
constexpr int kShortSweep = 2 * kWindow;

void sweep_in_windows(RealView h, const Chase& whole, Reflector* reflectors) {
  const HessenbergKernels& kernels = hessenberg_kernels();
  const Index m = whole.m;
  const Index end = whole.end;
  Chase window = whole;
  Index ready = m;  // Columns before this one have taken the reflectors found so far.
  for (window.first = m; window.first < end; window.first = window.last) {
    window.last = std::min(window.first + kWindow, end);
    window.top = window.first;
    window.right = std::min(window.last + 1, end);
    kernels.reflect_rows({m, window.first, end, reflectors}, h, ready, window.right + 1);
    const ReflectorRun found = {window.first, window.last, end, reflectors + (window.first - m)};
    kernels.chase(window, h, reflectors + (window.first - m));
    // The rows above the window, while its columns are in cache.
    kernels.reflect_columns(1, &found, h, whole.top, window.first);
    ready = window.right + 1;
  }
  kernels.reflect_rows({m, end, end, reflectors}, h, ready, whole.right + 1);
}

}  // namespace

void SweepWork::sweep(int first, int last, const SweepStart& start) {
  const int m = start.m;
  for (int i = m + 2; i <= last; ++i) {
    h(i, i - 2) = 0.0;
    if (i != m + 2) h(i, i - 3) = 0.0;
  }
  const auto [x, y, z] = start.vector;
  if (!has_z || kept.is_full(last - m)) apply();
  begin_batch(last);
  const Chase whole = {m, last, m, first, last, first_row(first), last_column(last), {x, y, z}};
  Reflector* const reflectors = kept.add(last - m);
  kept.sweeps[kept.count - 1] = {m, last, last, reflectors};
  if (last - m <= kShortSweep)
    hessenberg_kernels().chase(whole, h, reflectors);
  else
    sweep_in_windows(h, whole, reflectors);
}

void SweepWork::rotate_z(int k, double c, double s) {
  apply();
  const auto rotate = [=](Index rows, RealView x) {
    vector_kernels().rotate(rows, c, s, x.column(k), x.column(k + 1));
  };
  if (panel_room)
    over_z_panels([=](Index, Index rows, RealView panel) { rotate(rows, panel); });
  else
    rotate(z_end - z_begin, z.from(z_begin, 0));
}

void SweepWork::apply() {
  const HessenbergKernels& kernels = hessenberg_kernels();
  if (has_z && !panel_room) {
    kernels.reflect_columns(kept.count, kept.sweeps, z, z_begin, z_end);
  } else if (has_z && kept.count > 0) {
    const auto sweeps = std::span(kept.sweeps, kept.sweeps + kept.count);
    const Index first = std::ranges::min(sweeps, {}, &ReflectorRun::first).first;
    const Index last = std::ranges::max(sweeps, {}, &ReflectorRun::end).end;
    over_z_panels([&](Index, Index rows, RealView panel) {
      kernels.reflect_columns(kept.count, kept.sweeps, panel, 0, rows);
    });
    over_waiting_columns(first, last, [&](RealView panel) {
      kernels.reflect_transposed(kept.count, kept.sweeps, panel, kPanelHeight);
    });
  }
  kept.clear();
}

void SweepWork::finish() {
  apply();
  return_z();
}

}  // namespace matrix_pack
