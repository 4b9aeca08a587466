#include "linsys/qr_kernels.hpp"

#include "linsys/givens.hpp"
#include "pack/numeric/lanes/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Elements from...end - 1 of two neighbouring rows in panels.
void rotate_rows(Rotation rotation, double* lower, Index cols, Index from, Index end) {
  Index j = from;
  for (Index panel = 0; panel < end; panel += kPanelRows, lower += kPanelRows * cols, j = panel)
    for (; j < smaller(panel + kPanelRows, end); j += kWidth) {
      double* const at = lower + (j - panel);
      const Vector x = load_vector(at);
      const Vector y = load_vector(at + kPanelRows);
      store_vector(at, x * rotation.c + y * rotation.s);
      store_vector(at + kPanelRows, y * rotation.c - x * rotation.s);
    }
}

// Each rotation waits for the quotient, the root and the quotient of the one before. Meanwhile that
// one goes over the rows.
ClearedRun clear(Index most, double tol, double* v, double* rows, Index cols, Index from, Index end,
                 Rotation* rotations) {
  from = from < end ? from / kWidth * kWidth : end;
  double b = *v;
  Index count = 0;
  bool all_numbers = true;
  for (; count < most && counts(b, tol); ++count) {
    const double a = *--v;
    const Givens g = givens_coeffs(a, b);
    b = g.c * a + g.s * b;
    // The lower row stands first: the sine changes its sign.
    rotations[count] = {g.c, -g.s};
    all_numbers &= g.c == g.c;
    if (count > 0)
      rotate_rows(rotations[count - 1], rows + (count - 1) * kPanelRows, cols, from, end);
  }
  if (count > 0)
    rotate_rows(rotations[count - 1], rows + (count - 1) * kPanelRows, cols, from, end);
  *v = b;
  return {count, all_numbers};
}

}  // namespace

const QrKernels qr_kernels_table = {clear};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
