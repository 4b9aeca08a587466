// One sweep of the single-shift QR iteration on a complex Hessenberg matrix.
//
// A long sweep goes along the diagonal in windows; a column takes the rotations of its rows when
// the window reaches it. The columns are then rotated by blocks of rows, and those of Z wait for
// several sweeps. Every element sees the same operations in the same order as when each rotation is
// applied to everything at once.
#pragma once

#include "eigen/complex/qr_kernels.hpp"
#include "eigen/shared/balance.hpp"
#include "pack/memory.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

class ComplexSweepWork {
 public:
  // Without Z, only the active block l..en is kept up to date. False when there is no memory.
  bool open(int n, const ComplexView& h);
  bool open_with_vectors(const Balance& b, const ComplexView& h, const ComplexView& z);

  bool has_z() const { return z_.re != nullptr; }

  // Sweeps the active block l..en.
  void sweep(int l, int en);
  // Applies to Z what has been kept back.
  void finish();

 private:
  // Sweeps that Z may wait for.
  static constexpr int kMostRuns = 32;

  bool allocate(Index rotations);
  ComplexRotationRun& new_run(int l, int en);
  void rotate_rows(int l, int en, ComplexRotation* rotations);
  void make_last_real(int en, ComplexRotationRun& run);

  int n_ = 0;
  ComplexView h_ = {};
  ComplexView z_ = {};
  int z_begin_ = 0;  // The rows of Z that take part.
  int z_end_ = 0;
  Array<ComplexRotation> rotations_;
  Index capacity_ = 0;
  Index used_ = 0;
  int count_ = 0;
  ComplexRotationRun runs_[kMostRuns];
};

}  // namespace matrix_pack
