// One sweep of the single-shift QR iteration on a complex Hessenberg matrix.
//
// A long sweep goes along the diagonal in windows; a column takes the rotations of its rows when
// the window reaches it. The columns are then rotated by blocks of rows, and those of Z wait for
// several sweeps. Every element sees the same operations in the same order as when each rotation is
// applied to everything at once.
#pragma once

#include <cstddef>

#include "eigen/complex/qr_kernels.hpp"
#include "eigen/shared/balance.hpp"
#include "pack/memory.hpp"

namespace matrix_pack {

class ComplexSweepWork {
 public:
  // Without Z, only the active block l..en is kept up to date. False when there is no memory.
  bool open(const Parts& h);
  bool open_with_vectors(const Parts& h, const Balance& b, const Parts& z);

  bool has_z() const { return z_.n != 0; }

  // Sweeps the active block l..en.
  void sweep(int l, int en);
  // Applies to Z what has been kept back.
  void finish();

 private:
  // Sweeps that Z may wait for.
  static constexpr int kMostRuns = 32;

  bool allocate(std::ptrdiff_t rotations);
  ComplexRotationRun& new_run(int l, int en);
  void rotate_rows(int l, int en, ComplexRotation* rotations);
  void make_last_real(int en, ComplexRotationRun& run);

  Parts h_ = {};
  Parts z_ = {};
  int z_begin_ = 0;  // The rows of Z that take part.
  int z_end_ = 0;
  Array<ComplexRotation> rotations_;
  std::ptrdiff_t capacity_ = 0;
  std::ptrdiff_t used_ = 0;
  int count_ = 0;
  ComplexRotationRun runs_[kMostRuns];
};

}  // namespace matrix_pack
