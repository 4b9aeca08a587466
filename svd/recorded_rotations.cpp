#include "svd/recorded_rotations.hpp"

#include <algorithm>

#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

RecordedRotations::RecordedRotations(Index n, const Factor& left_factor, const Factor& right_factor,
                                     double* work)
    : n(n),
      left_factor(left_factor),
      right_factor(right_factor),
      panel_work(work),
      signs(work + panel_size(n)),
      right_rotations(reinterpret_cast<Rotation*>(signs + n)),
      left_rotations(right_rotations + kSweeps * n),
      next_right(right_rotations),
      next_left(left_rotations) {
  std::fill_n(signs, n, 1.0);
}

void RecordedRotations::begin_sweep(Index l, Index count) {
  if (sweep_count == kSweeps) apply();
  right_sweeps[sweep_count] = {l, count, next_right};
  left_sweeps[sweep_count] = {l, count, next_left};
  ++sweep_count;
}

// Rare, and not between neighbours: applied at once.
void RecordedRotations::cancel(Index p, Index i, double c, double s) {
  apply();
  vector_kernels().rotate(left_factor.rows, c, s, left_factor.a + p * left_factor.ld,
                          left_factor.a + i * left_factor.ld);
}

void RecordedRotations::apply() {
  if (sweep_count == 0) return;
  rotation_kernels().turn(right_factor.rows, right_factor.a, right_factor.ld, right_sweeps,
                          sweep_count, panel_work);
  rotation_kernels().turn(left_factor.rows, left_factor.a, left_factor.ld, left_sweeps, sweep_count,
                          panel_work);
  sweep_count = 0;
  next_right = right_rotations;
  next_left = left_rotations;
}

void RecordedRotations::finish() {
  apply();
  for (Index k = 0; k < n; ++k)
    if (signs[k] < 0.0)
      vector_kernels().scale(right_factor.rows, -1.0, right_factor.a + k * right_factor.ld);
}

}  // namespace matrix_pack
