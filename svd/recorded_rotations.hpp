// The rotations of the SVD iteration, kept back and applied many sweeps at a time.
//
// The iteration itself never reads the factors. Their rows see the same rotations in the same order
// whether these come one by one or in blocks, and a block of rows stays in cache for all of them.
#pragma once

#include "pack/numeric/rotation_kernels.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// A column-major array whose columns are turned.
struct Factor {
  Index rows;
  double* a;
  Index ld;
};

struct RecordedRotations {
  static constexpr bool kGuardsFirstRoot = true;
  static constexpr Index kSweeps = 32;

  // Work for factors of n columns, in doubles: the rotations of kSweeps sweeps on either side, a
  // panel of rows, and a sign for each column of the right factor.
  static constexpr Index work_size(Index n) {
    return panel_size(n) + n * (2 * kSweeps * kDoubles + 1);
  }

  RecordedRotations(Index n, const Factor& left_factor, const Factor& right_factor, double* work);

  void cancel(Index p, Index i, double c, double s);
  void begin_sweep(Index l, Index count);
  void right(double c, double s) { *next_right++ = {c, s}; }
  void left(double c, double s) { *next_left++ = {c, s}; }
  void negate(Index k) { signs[k] = -1.0; }

  // Applies all that is recorded, the negations last: nothing turns a column after its negation.
  void finish();

 private:
  static constexpr Index kDoubles = sizeof(Rotation) / sizeof(double);

  void apply();

  Index n;
  Factor left_factor;
  Factor right_factor;
  double* panel_work;
  double* signs;
  Rotation* right_rotations;
  Rotation* left_rotations;
  Rotation* next_right;
  Rotation* next_left;
  Index sweep_count = 0;
  Sweep right_sweeps[kSweeps];
  Sweep left_sweeps[kSweeps];
};

}  // namespace matrix_pack
