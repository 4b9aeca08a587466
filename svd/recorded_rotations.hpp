// The rotations of the SVD iteration, kept back and applied many sweeps at a time.
//
// The iteration itself never reads the factors. Their rows see the same rotations in the same order
// whether these come one by one or in blocks, and a block of rows stays in cache for all of them.
#pragma once

#include <cstddef>

#include "pack/numeric/rotation_kernels.hpp"

namespace matrix_pack {

// A column-major array whose columns are turned.
struct Factor {
  std::ptrdiff_t rows;
  double* a;
  std::ptrdiff_t ld;
};

struct RecordedRotations {
  static constexpr bool kGuardsFirstRoot = true;
  static constexpr std::ptrdiff_t kSweeps = 32;

  // Work for factors of n columns, in doubles: the rotations of kSweeps sweeps on either side, a
  // panel of rows, and a sign for each column of the right factor.
  static constexpr std::ptrdiff_t work_size(std::ptrdiff_t n) {
    return panel_size(n) + n * (2 * kSweeps * kDoubles + 1);
  }

  RecordedRotations(std::ptrdiff_t n, const Factor& left_factor, const Factor& right_factor,
                    double* work);

  void cancel(std::ptrdiff_t p, std::ptrdiff_t i, double c, double s);
  void begin_sweep(std::ptrdiff_t l, std::ptrdiff_t count);
  void right(double c, double s) { *next_right++ = {c, s}; }
  void left(double c, double s) { *next_left++ = {c, s}; }
  void negate(std::ptrdiff_t k) { signs[k] = -1.0; }

  // Applies all that is recorded, the negations last: nothing turns a column after its negation.
  void finish();

 private:
  static constexpr std::ptrdiff_t kDoubles = sizeof(Rotation) / sizeof(double);

  void apply();

  std::ptrdiff_t n;
  Factor left_factor;
  Factor right_factor;
  double* panel_work;
  double* signs;
  Rotation* right_rotations;
  Rotation* left_rotations;
  Rotation* next_right;
  Rotation* next_left;
  std::ptrdiff_t sweep_count = 0;
  Sweep right_sweeps[kSweeps];
  Sweep left_sweeps[kSweeps];
};

}  // namespace matrix_pack
