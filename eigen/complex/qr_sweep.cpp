#include "eigen/complex/qr_sweep.hpp"

#include <algorithm>

namespace matrix_pack {

namespace {

// Rotations found in one window: their columns stay in the first-level cache.
constexpr int kWindow = 32;

// Full sweeps that Z waits for.
constexpr Index kFullSweeps = 16;

}  // namespace

bool ComplexSweepWork::allocate(Index rotations) {
  capacity_ = rotations;
  rotations_ = new_array<ComplexRotation>(rotations);
  return rotations_ != nullptr;
}

bool ComplexSweepWork::open(int n, const ComplexView& h) {
  n_ = n;
  h_ = h;
  return allocate(n);
}

bool ComplexSweepWork::open_with_vectors(const Balance& b, const ComplexView& h,
                                         const ComplexView& z) {
  n_ = b.n;
  h_ = h;
  z_ = z;
  z_begin_ = b.low;
  z_end_ = b.igh + 1;
  return allocate(kFullSweeps * n_);
}

// Room for the rotations l+1..en.
ComplexRotationRun& ComplexSweepWork::new_run(int l, int en) {
  if (!has_z() || count_ == kMostRuns || used_ + (en - l) > capacity_) finish();
  runs_[count_] = {l + 1, en, rotations_.get() + used_, {1.0, 0.0}};
  used_ += en - l;
  return runs_[count_++];
}

void ComplexSweepWork::finish() {
  if (has_z()) complex_qr_kernels().rotate_all_columns(count_, runs_, z_, z_begin_, z_end_);
  count_ = 0;
  used_ = 0;
}

// Turns the block into R, and the columns right of it.
void ComplexSweepWork::rotate_rows(int l, int en, ComplexRotation* rotations) {
  const ComplexQrKernels& kernels = complex_qr_kernels();
  const int right = has_z() ? n_ - 1 : en;
  int ready = l;  // Columns before this one have taken the rotations found so far.
  for (int first = l + 1; first <= en; first += kWindow) {
    const int last = std::min(first + kWindow - 1, en);
    kernels.rotate_rows({l + 1, first - 1, rotations, {1.0, 0.0}}, h_, ready, last + 1);
    kernels.triangularize(first, last, last, h_, rotations + (first - l - 1));
    ready = last + 1;
  }
  kernels.rotate_rows({l + 1, en, rotations, {1.0, 0.0}}, h_, ready, right + 1);
}

// Multiplies row en so that R(en,en) becomes real, and notes that column en is to be multiplied
// back.
void ComplexSweepWork::make_last_real(int en, ComplexRotationRun& run) {
  const Complex last = h_(en, en);
  if (last.im == 0.0) return;
  const double norm = scaled_modulus(last.re, last.im);
  run.phase = {last.re / norm, last.im / norm};
  h_.set(en, en, {norm, 0.0});
  const int right = has_z() ? n_ - 1 : en;
  for (int j = en + 1; j <= right; ++j)
    h_.set(en, j, multiply({run.phase.re, -run.phase.im}, h_(en, j)));
}

void ComplexSweepWork::sweep(int l, int en) {
  ComplexRotationRun& run = new_run(l, en);
  rotate_rows(l, en, const_cast<ComplexRotation*>(run.rotations));
  make_last_real(en, run);
  complex_qr_kernels().rotate_columns(run, h_, has_z() ? 0 : l, en + 1);
}

}  // namespace matrix_pack
