#include "svd/svd_core.hpp"

#include <algorithm>
#include <numeric>
#include <utility>

#include "pack/matrix_views.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/rotation_batch.hpp"
#include "pack/numeric/vector_kernels.hpp"
#include "svd/accumulate.hpp"
#include "svd/bidiagonal.hpp"
#include "svd/implicit_shift.hpp"

namespace matrix_pack {

namespace {

// Up to this order the work stands on the stack.
constexpr Index kFew = 4;

// A factor whose columns are rotated.
struct Factor {
  Index rows;
  RealView a;
};

// The rotations of the iteration, kept back for both factors.
struct KeptRotations {
  static constexpr bool kGuardsFirstRoot = true;

  RotationBatch u;
  RotationBatch v;
  double* signs;  // Of the columns of V.
  Rotation* next_left = nullptr;
  Rotation* next_right = nullptr;

  // Rare, and not between neighbours: applied at once.
  void cancel(Index p, Index i, double c, double s) { u.rotate(p, i, {c, s}); }
  void begin_sweep(Index l, Index count) {
    next_right = v.sweep(l, count);
    next_left = u.sweep(l, count);
  }
  void right(double c, double s) { *next_right++ = {c, s}; }
  void left(double c, double s) { *next_left++ = {c, s}; }
  void negate(Index k) { signs[k] = -1.0; }

  // Applies all that is kept back, the negations last: no column takes part in a rotation after its
  // negation.
  void finish(Index n) {
    u.finish();
    v.finish();
    for (Index k = 0; k < n; ++k)
      if (signs[k] < 0.0) vector_kernels().scale(v.rows, -1.0, v.columns.column(k));
  }
};

// Doubles of work for factors of n columns: a panel of rows, and the signs.
constexpr Index rotation_work(Index n) {
  return panel_size(n) + n;
}

// Column i of a factor becomes the column order[i] that it was (numbers of columns, as doubles).
// `order` is used up; `column` is room for one column of each factor. Column by column along each
// cycle of the permutation.
void permute_columns(Index n, const Factor& u, const Factor& v, double* order, double* column) {
  const auto copy = [](const Factor& factor, const double* from, double* to) {
    std::copy_n(from, factor.rows, to);
  };
  for (Index start = 0; start < n; ++start) {
    if (order[start] == static_cast<double>(start)) continue;
    copy(u, u.a.column(start), column);
    copy(v, v.a.column(start), column + u.rows);
    Index i = start;
    for (;;) {
      const auto next = static_cast<Index>(std::exchange(order[i], static_cast<double>(i)));
      if (next == start) break;
      copy(u, u.a.column(next), u.a.column(i));
      copy(v, v.a.column(next), v.a.column(i));
      i = next;
    }
    copy(u, column, u.a.column(i));
    copy(v, column + u.rows, v.a.column(i));
  }
}

}  // namespace

const char* svd_core(aMatrix* u, aMatrix* v, aMatrix* s) {
  const Index m = u->rows;
  const Index n = u->cols;
  if (m < n) return kFewerRowsThanColumns;
  // What the steps need in turn: the reduction, the rotations, the permutation.
  const Index shared = std::max({bidiagonalise_work(m, n), rotation_work(n), m + n + n});
  const Work<double, 2 * panel_size(kFew)> work(n + kLine + n * n + shared);
  const Work<Rotation, 2 * kept_rotations(kFew)> rotations(2 * kept_rotations(n));
  // A matrix without a real array is zero; its U is not.
  if (!provide_part(u, &aMatrix::re) || !work || !rotations) return kOutOfMemory;
  double* const rv1 = work.get();
  const RealView vectors = {as_in_line(rv1 + n, v->re), n};
  double* const scratch = vectors.column(n);

  double* const w = s->re;
  const Factor left = {m, real_view(u)};
  const Factor right = {n, real_view(v)};
  const Bidiagonal b = {m, n, left.a.x, left.a.ld, w, rv1};
  const double anorm = bidiagonalise(b, {vectors.x, n}, scratch);
  accumulate_right(b, vectors, right.a);
  accumulate_left(b);

  KeptRotations kept = {{m, left.a, n, rotations.get(), scratch},
                        {n, right.a, n, rotations.get() + kept_rotations(n), scratch},
                        scratch + panel_size(n)};
  std::fill_n(kept.signs, n, 1.0);
  if (const char* message = diagonalise(n, w, rv1, negligible(anorm), kept)) return message;
  kept.finish(n);

  double* const order = scratch + m + n;
  std::iota(order, order + n, 0.0);
  sort_descending(n, w, [&](Index i, Index j) { std::swap(order[i], order[j]); });
  permute_columns(n, left, right, order, scratch);
  return nullptr;
}

}  // namespace matrix_pack
