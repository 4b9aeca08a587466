// One sweep of the double-shift QR iteration: the bulge is chased along the diagonal, and the rest
// of the matrix follows in blocks.
//
// A long sweep goes along the diagonal in windows. A column takes all reflectors of its rows when
// the window reaches it, in one go; the rows above take those of the window's columns then, too.
// The columns of Z, and those behind the block, wait for several sweeps. Every element sees the
// same operations in the same order as when each reflector is applied to everything at once.
#pragma once

#include "eigen/general/qr_kernels.hpp"
#include "eigen/shared/sweep_work.hpp"

namespace matrix_pack {

// Where a sweep starts, and the vector that its first reflector takes to a unit vector.
struct SweepStart {
  int m;
  double vector[3];
};

struct SweepWork : SweepWorkOf<RealView, ReflectorRun, Reflector> {
  // Sweeps the active block first..last.
  void sweep(int first, int last, const SweepStart& start);
  // Columns k and k+1 of Z, (x, y), become (c x + s y, c y - s x).
  void rotate_z(int k, double c, double s);
  // Applies what has been kept back.
  void apply();
  // The same at the end: only then is Z up to date.
  void finish();
};

}  // namespace matrix_pack
