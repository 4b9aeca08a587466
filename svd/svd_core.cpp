#include "svd/svd_core.hpp"

#include <algorithm>
#include <numeric>
#include <utility>

#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "svd/accumulate.hpp"
#include "svd/bidiagonal.hpp"
#include "svd/implicit_shift.hpp"
#include "svd/recorded_rotations.hpp"

namespace matrix_pack {

namespace {

// Column i of a factor becomes the column order[i] that it was. `order` is used up; `column` is
// room for one column of each factor. Column by column along each cycle of the permutation.
void permute_columns(Index n, const Factor& u, const Factor& v, Index* order, double* column) {
  const auto copy = [](const Factor& factor, const double* from, double* to) {
    std::copy_n(from, factor.rows, to);
  };
  for (Index start = 0; start < n; ++start) {
    if (order[start] == start) continue;
    copy(u, u.a + start * u.ld, column);
    copy(v, v.a + start * v.ld, column + u.rows);
    Index i = start;
    for (Index next; (next = std::exchange(order[i], i)) != start; i = next) {
      copy(u, u.a + next * u.ld, u.a + i * u.ld);
      copy(v, v.a + next * v.ld, v.a + i * v.ld);
    }
    copy(u, column, u.a + i * u.ld);
    copy(v, column + u.rows, v.a + i * v.ld);
  }
}

}  // namespace

const char* svd_core(aMatrix* u, aMatrix* v, aMatrix* s) {
  const Index m = u->rows;
  const Index n = u->cols;
  if (m < n) return kFewerRowsThanColumns;
  const Index shared = std::max(RecordedRotations::work_size(n), bidiagonalise_work(m, n));
  const Doubles work = new_doubles(n + n * n + shared);
  const Array<Index> order = new_array<Index>(n);
  // A matrix without a real array is zero; its U is not.
  if (!provide_part(u, &aMatrix::re) || !work || !order) return kOutOfMemory;
  double* const rv1 = work.get();
  double* const rows = rv1 + n;
  double* const scratch = rows + n * n;

  double* const w = s->re;
  const Factor left = {m, u->re, u->leading_dimension};
  const Factor right = {n, v->re, v->leading_dimension};
  const Bidiagonal b = {m, n, left.a, left.ld, w, rv1};
  const double anorm = bidiagonalise(b, {rows, n}, scratch);
  accumulate_right(b, rows, right.a);
  accumulate_left(b);

  RecordedRotations rotations(n, left, right, scratch);
  if (const char* message = diagonalise(n, w, rv1, negligible(anorm), rotations)) return message;
  rotations.finish();

  std::iota(order.get(), order.get() + n, Index{0});
  sort_descending(n, w, [&](Index i, Index j) { std::swap(order[i], order[j]); });
  permute_columns(n, left, right, order.get(), scratch);
  return nullptr;
}

}  // namespace matrix_pack
