#include "eigen/complex/qr_sweep.hpp"

#include <algorithm>

namespace matrix_pack {

namespace {

constexpr Complex kOne = {1.0, 0.0};

// Rotations found in one window: their columns stay in the first-level cache.
constexpr int kWindow = 32;

// The block l..en becomes R, and the columns right of it follow.
void triangularize(const ComplexSweepWork& work, int l, int en, ComplexRotation* rotations) {
  const ComplexQrKernels& kernels = complex_qr_kernels();
  int ready = l;  // Columns before this one have taken the rotations found so far.
  for (int first = l + 1; first <= en; first += kWindow) {
    const int last = std::min(first + kWindow - 1, en);
    kernels.rotate_rows({l + 1, first - 1, rotations, kOne}, work.h, ready, last + 1);
    kernels.triangularize(first, last, last, work.h, rotations + (first - l - 1));
    ready = last + 1;
  }
  kernels.rotate_rows({l + 1, en, rotations, kOne}, work.h, ready, work.last_column(en) + 1);
}

// Multiplies row en so that R(en,en) becomes real. Returns the phase by which column en is to be
// multiplied for it.
Complex make_last_real(const ComplexSweepWork& work, int en) {
  const ComplexView& h = work.h;
  const Complex last = h(en, en);
  if (last.im == 0.0) return kOne;
  const double norm = scaled_modulus(last.re, last.im);
  const Complex phase = {last.re / norm, last.im / norm};
  h.set(en, en, {norm, 0.0});
  for (int j = en + 1; j <= work.last_column(en); ++j)
    h.set(en, j, multiply({phase.re, -phase.im}, h(en, j)));
  return phase;
}

}  // namespace

void ComplexSweepWork::sweep(int l, int en) {
  if (!has_z || kept.is_full(en - l)) finish();
  ComplexRotation* const rotations = kept.add(en - l);
  triangularize(*this, l, en, rotations);
  ComplexRotationRun& run = kept.sweeps[kept.count - 1];
  run = {l + 1, en, rotations, make_last_real(*this, en)};
  complex_qr_kernels().rotate_columns(run, h, first_row(l), en + 1);
}

void ComplexSweepWork::finish() {
  if (has_z) complex_qr_kernels().rotate_all_columns(kept.count, kept.sweeps, z, z_begin, z_end);
  kept.clear();
}

}  // namespace matrix_pack
