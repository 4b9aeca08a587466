// One sweep of the double-shift QR iteration: the bulge is chased along the diagonal, and the rest
// of the matrix follows in blocks.
//
// A long sweep goes along the diagonal in windows. A column takes all reflectors of its rows when
// the window reaches it, and a block of rows takes those of the columns right of its window at the
// end, in one go each. The columns of Z wait for several sweeps. Every element sees the same
// operations in the same order as when each reflector is applied to everything at once.
#pragma once

#include "eigen/general/qr_kernels.hpp"
#include "eigen/shared/balance.hpp"
#include "pack/memory.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// Where a sweep starts, and the vector that its first reflector turns into a unit vector.
struct SweepStart {
  int m;
  double vector[3];
};

class SweepWork {
 public:
  // Without Z, only the active block l..en is kept up to date. False when there is no memory.
  bool open(int n, RealView h);
  bool open_with_vectors(const Balance& b, RealView h, RealView z);

  bool has_z() const { return z_.x != nullptr; }

  // Sweeps the active block l..en.
  void sweep(int l, int en, const SweepStart& start);
  // Columns k and k+1 of Z, (x, y), become (c x + s y, c y - s x).
  void rotate_z(int k, double c, double s);
  // Applies to Z what has been kept back.
  void finish();

 private:
  // Sweeps that Z may wait for.
  static constexpr int kMostRuns = 32;

  bool allocate(Index reflectors);
  Reflector* new_run(int m, int en);
  void sweep_in_windows(const Chase& whole, Reflector* reflectors);

  int n_ = 0;
  RealView h_ = {};
  RealView z_ = {};
  int z_begin_ = 0;  // The rows of Z that take part.
  int z_end_ = 0;
  Array<Reflector> reflectors_;
  Index capacity_ = 0;
  Index used_ = 0;
  int count_ = 0;
  ReflectorRun runs_[kMostRuns];
};

}  // namespace matrix_pack
