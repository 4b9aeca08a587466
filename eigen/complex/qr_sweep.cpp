#include "eigen/complex/qr_sweep.hpp"

#include <algorithm>
#include <span>

namespace matrix_pack {

namespace {

constexpr Complex kOne = {1.0, 0.0};

// Rotations found in one window: their columns stay in the first-level cache.
constexpr int kWindow = 32;

// The block first..last becomes R, and the columns right of it follow. Columns take the rotations
// of columns while they are in cache, but for the last ones; returns the first of the rotations
// that are left.
int triangularize(const ComplexSweepWork& work, int first, int last, ComplexRotation* rotations) {
  const ComplexQrKernels& kernels = complex_qr_kernels();
  int ready = first;     // Columns before this one have taken the rotations found so far.
  int left = first + 1;  // Rotations before this one have rotated their columns.
  for (int i = first + 1; i <= last; i += kWindow) {
    const int end = std::min(i + kWindow - 1, last);
    kernels.rotate_rows({first + 1, i - 1, rotations, kOne}, work.h, ready, end + 1);
    kernels.triangularize(i, end, end, work.h, rotations + (i - first - 1));
    ready = end + 1;
    if (end == last) break;
    // The rotation behind `end` is found from column `end`, which waits for that.
    kernels.rotate_columns({left, end - 1, rotations + (left - first - 1), kOne}, work.h,
                           work.first_row(first), end);
    left = end;
  }
  kernels.rotate_rows({first + 1, last, rotations, kOne}, work.h, ready,
                      work.last_column(last) + 1);
  return left;
}

// Multiplies the last row so that R(last,last) becomes real. Returns the phase by which the last
// column is to be multiplied for it.
Complex make_last_real(const ComplexSweepWork& work, int last) {
  const ComplexView& h = work.h;
  const Complex corner = h(last, last);
  if (corner.im == 0.0) return kOne;
  const double norm = scaled_modulus(corner.re, corner.im);
  const Complex phase = {corner.re / norm, corner.im / norm};
  h.set(last, last, {norm, 0.0});
  for (int j = last + 1; j <= work.last_column(last); ++j)
    h.set(last, j, multiply({phase.re, -phase.im}, h(last, j)));
  return phase;
}

}  // namespace

void ComplexSweepWork::sweep(int first, int last) {
  if (!has_z || kept.is_full(last - first)) apply();
  begin_batch(last);
  ComplexRotation* const rotations = kept.add(last - first);
  const int left = triangularize(*this, first, last, rotations);
  const Complex phase = make_last_real(*this, last);
  complex_qr_kernels().rotate_columns({left, last, rotations + (left - first - 1), phase}, h,
                                      first_row(first), last + 1);
  kept.sweeps[kept.count - 1] = {first + 1, last, rotations, phase};
}

void ComplexSweepWork::apply() {
  const ComplexQrKernels& kernels = complex_qr_kernels();
  if (has_z && !panel_room) {
    kernels.rotate_all_columns(kept.count, kept.sweeps, z, z_begin, z_end);
  } else if (has_z && kept.count > 0) {
    const auto sweeps = std::span(kept.sweeps, kept.sweeps + kept.count);
    const Index first = std::ranges::min(sweeps, {}, &ComplexRotationRun::first).first - 1;
    const Index last = std::ranges::max(sweeps, {}, &ComplexRotationRun::last).last;
    over_z_panels([&](Index, Index rows, const ComplexView& panel) {
      kernels.rotate_all_columns(kept.count, kept.sweeps, panel, 0, rows);
    });
    over_waiting_columns(first, last, [&](const ComplexView& panel) {
      kernels.rotate_transposed(kept.count, kept.sweeps, panel, kPanelHeight);
    });
  }
  kept.clear();
}

void ComplexSweepWork::finish() {
  apply();
  return_z();
}

}  // namespace matrix_pack
