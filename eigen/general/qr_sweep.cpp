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

// Full sweeps that Z waits for.
constexpr Index kFullSweeps = 16;

}  // namespace

bool SweepWork::allocate(Index reflectors) {
  capacity_ = reflectors;
  reflectors_ = new_array<Reflector>(reflectors);
  return reflectors_ != nullptr;
}

bool SweepWork::open(int n, RealView h) {
  n_ = n;
  h_ = h;
  return allocate(n);
}

bool SweepWork::open_with_vectors(const Balance& b, RealView h, RealView z) {
  n_ = b.n;
  h_ = h;
  z_ = z;
  z_begin_ = b.low;
  z_end_ = b.igh + 1;
  return allocate(kFullSweeps * n_);
}

// Room for the reflectors of a sweep from m to en.
Reflector* SweepWork::new_run(int m, int en) {
  if (!has_z() || count_ == kMostRuns || used_ + (en - m) > capacity_) finish();
  Reflector* const place = reflectors_.get() + used_;
  runs_[count_++] = {m, en, en, place};
  used_ += en - m;
  return place;
}

void SweepWork::finish() {
  if (has_z()) hessenberg_kernels().reflect_columns(count_, runs_, z_, z_begin_, z_end_);
  count_ = 0;
  used_ = 0;
}

void SweepWork::rotate_z(int k, double c, double s) {
  finish();
  vector_kernels().rotate(z_end_ - z_begin_, c, s, &z_(z_begin_, k), &z_(z_begin_, k + 1));
}

void SweepWork::sweep(int l, int en, const SweepStart& start) {
  const int m = start.m;
  for (int i = m + 2; i <= en; ++i) {
    h_(i, i - 2) = 0.0;
    if (i != m + 2) h_(i, i - 3) = 0.0;
  }
  Chase whole = {m, en, m, l, en, has_z() ? 0 : l, has_z() ? n_ - 1 : en, {}};
  std::copy_n(start.vector, 3, whole.start);
  Reflector* const reflectors = new_run(m, en);
  if (en - m <= kShortSweep)
    hessenberg_kernels().chase(whole, h_, reflectors);
  else
    sweep_in_windows(whole, reflectors);
}

void SweepWork::sweep_in_windows(const Chase& whole, Reflector* reflectors) {
  const HessenbergKernels& kernels = hessenberg_kernels();
  const Index m = whole.m;
  const Index en = whole.en;
  Chase window = whole;
  Index ready = m;  // Columns before this one have taken the reflectors found so far.
  for (window.first = m; window.first < en; window.first = window.last) {
    window.last = std::min(window.first + kWindow, en);
    window.top = window.first;
    window.right = std::min(window.last + 1, en);
    kernels.reflect_rows({m, window.first, en, reflectors}, h_, ready, window.right + 1);
    kernels.chase(window, h_, reflectors + (window.first - m));
    ready = window.right + 1;
  }
  kernels.reflect_rows({m, en, en, reflectors}, h_, ready, whole.right + 1);
  // The rows above the sweep, then those of each window but the last.
  const ReflectorRun all = {m, en, en, reflectors};
  kernels.reflect_columns(1, &all, h_, whole.top, m);
  for (Index first = m; first + kWindow < en; first += kWindow) {
    const Index last = first + kWindow;
    const ReflectorRun rest = {last, en, en, reflectors + (last - m)};
    kernels.reflect_columns(1, &rest, h_, first, last);
  }
}

}  // namespace matrix_pack
