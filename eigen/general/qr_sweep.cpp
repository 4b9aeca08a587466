#include "eigen/general/qr_sweep.hpp"

#include <algorithm>

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
    kernels.chase(window, h, reflectors + (window.first - m));
    ready = window.right + 1;
  }
  const ReflectorRun all = {m, end, end, reflectors};
  kernels.reflect_rows(all, h, ready, whole.right + 1);
  // The rows above the sweep, then those of each window but the last.
  kernels.reflect_columns(1, &all, h, whole.top, m);
  for (Index first = m; first + kWindow < end; first += kWindow) {
    const Index last = first + kWindow;
    const ReflectorRun rest = {last, end, end, reflectors + (last - m)};
    kernels.reflect_columns(1, &rest, h, first, last);
  }
}

}  // namespace

void SweepWork::sweep(int first, int last, const SweepStart& start) {
  const int m = start.m;
  for (int i = m + 2; i <= last; ++i) {
    h(i, i - 2) = 0.0;
    if (i != m + 2) h(i, i - 3) = 0.0;
  }
  const auto [x, y, z] = start.vector;
  const Chase whole = {m, last, m, first, last, first_row(first), last_column(last), {x, y, z}};
  if (!has_z || kept.is_full(last - m)) finish();
  Reflector* const reflectors = kept.add(last - m);
  kept.sweeps[kept.count - 1] = {m, last, last, reflectors};
  if (last - m <= kShortSweep)
    hessenberg_kernels().chase(whole, h, reflectors);
  else
    sweep_in_windows(h, whole, reflectors);
}

void SweepWork::rotate_z(int k, double c, double s) {
  finish();
  vector_kernels().rotate(z_end - z_begin, c, s, &z(z_begin, k), &z(z_begin, k + 1));
}

void SweepWork::finish() {
  if (has_z) hessenberg_kernels().reflect_columns(kept.count, kept.sweeps, z, z_begin, z_end);
  kept.clear();
}

}  // namespace matrix_pack
