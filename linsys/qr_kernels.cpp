#include "linsys/qr_kernels.hpp"

#include "linsys/givens.hpp"
#include "pack/numeric/lanes/lanes.hpp"
#include "pack/numeric/moderate.hpp"

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

static_assert(kAbreast == kLanes);

MATRIX_INLINE Vector square_roots(Vector x) {
  for (int l = 0; l < kWidth; ++l) x[l] = __builtin_sqrt(x[l]);
  return x;
}

// givens_coeffs for several pairs. Where the second number is zero the result is of no use, but
// nothing is divided by zero.
struct GivensVectors {
  Vector c;
  Vector s;
};
MATRIX_INLINE GivensVectors givens_vectors(Vector a, Vector b) {
  const auto first_is_larger = magnitude(b) <= magnitude(a);
  const Vector divisor = first_is_larger ? a : b;
  const Vector t = (first_is_larger ? b : a) / (divisor == 0.0 ? Vector{} + 1.0 : divisor);
  const Vector larger = 1.0 / square_roots(t * t + 1.0);
  const Vector smaller = larger * t;
  return {first_is_larger ? larger : smaller, first_is_larger ? smaller : larger};
}

// A rotation of two neighbouring rows of kLanes elements.
MATRIX_INLINE void rotate_two(Rotation rotation, double* lower) {
  for (int p = 0; p < kParts; ++p) {
    double* const at = lower + p * kWidth;
    const Vector x = load_vector(at);
    const Vector y = load_vector(at + kLanes);
    store_vector(at, x * rotation.c + y * rotation.s);
    store_vector(at + kLanes, y * rotation.c - x * rotation.s);
  }
}

// A wavefront: in step t column j makes its rotation t - 2 j. By then the column before it has
// rotated both rows, so that eight rotations wait for the quotient, the root and the quotient
// together.
ClearedAbreast clear_abreast(Index rows, Index cols, const double* last, double* x,
                             Rotation* const* rotations) {
  ClearedAbreast cleared = {};
  if (!are_moderate(kLanes, cols, {last, kPanelRows})) return cleared;
  Lanes squares = {};
  for (Index k = 0; k < cols; ++k, last += kPanelRows)
    for (int p = 0; p < kParts; ++p) {
      const Vector xk = load_vector(last + p * kWidth);
      squares.part[p] += xk * xk;
      if (k < rows) store_vector(x + k * kLanes + p * kWidth, xk);
    }
  Lanes b = {};
  b.part[0][0] = x[0];
  Lanes smallest;
  VectorBits begin[kParts];
  VectorBits end[kParts];
  for (int l = 0; l < kLanes; ++l) {
    smallest.part[l / kWidth][l % kWidth] = kModerate;
    begin[l / kWidth][l % kWidth] = 2 * l;
    end[l / kWidth][l % kWidth] = rows - 1 + l;
  }
  for (Index t = 0; t < rows + kLanes - 2; ++t) {
    double c[kLanes];
    double s[kLanes];
    for (int p = 0; p < kParts; ++p) {
      Vector a;
      for (int l = 0; l < kWidth; ++l) {
        const int j = p * kWidth + l;
        a[l] = x[(t + 1 - 2 * j) * kLanes + j];
      }
      const Vector magnitude_b = magnitude(b.part[p]);
      const GivensVectors g = givens_vectors(a, b.part[p]);
      store_vector(c + p * kWidth, g.c);
      store_vector(s + p * kWidth, -g.s);
      // The step before the first one of a column (but of column 0) finds its last element.
      const auto active = (begin[p] <= t) & (end[p] > t);
      b.part[p] = active ? g.c * a + g.s * b.part[p] : a;
      const auto is_smaller = active & (magnitude_b < smallest.part[p]);
      smallest.part[p] = is_smaller ? magnitude_b : smallest.part[p];
    }
    const Index end_j = smaller(kLanes, t / 2 + 1);
    for (Index j = larger(0, t - rows + 2); j < end_j; ++j) {
      const Index k = t - 2 * j;
      // The lower row stands first: the sine changes its sign.
      rotate_two(rotations[j][k] = {c[j], s[j]}, x + k * kLanes);
    }
  }
  store_lanes(cleared.squares, squares);
  store_lanes(cleared.smallest, smallest);
  return cleared;
}

}  // namespace

const QrKernels qr_kernels_table = {clear, clear_abreast};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
