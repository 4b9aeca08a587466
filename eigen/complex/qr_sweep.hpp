// One sweep of the single-shift QR iteration on a complex Hessenberg matrix.
//
// A long sweep goes along the diagonal in windows; a column takes the rotations of its rows when
// the window reaches it. Then the window's columns are rotated by blocks of rows, and those of Z
// and those behind the block wait for several sweeps. Every element sees the same operations in the
// same order as when each rotation is applied to everything at once.
#pragma once

#include "eigen/complex/qr_kernels.hpp"
#include "eigen/shared/sweep_work.hpp"

namespace matrix_pack {

struct ComplexSweepWork : SweepWorkOf<ComplexView, ComplexRotationRun, ComplexRotation> {
  // Sweeps the active block first..last.
  void sweep(int first, int last);
  // Applies what has been kept back.
  void apply();
  // The same at the end: only then is Z up to date.
  void finish();
};

}  // namespace matrix_pack
