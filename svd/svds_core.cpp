#include "svd/svds_core.hpp"

#include "pack/matrix_views.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/spread_copy.hpp"
#include "svd/bidiagonal.hpp"
#include "svd/implicit_shift.hpp"

namespace matrix_pack {

namespace {

// Without factors the rotations are dropped.
struct NoRotations {
  static constexpr bool kGuardsFirstRoot = false;
  void cancel(Index, Index, double, double) {}
  void begin_sweep(Index, Index) {}
  void right(double, double) {}
  void left(double, double) {}
  void negate(Index) {}
};

}  // namespace

const char* svds_core(aMatrix* m) {
  const Index n = m->cols;
  const Index ld = m->leading_dimension;
  if (m->rows < n) return kFewerRowsThanColumns;
  if (m->re == nullptr) return nullptr;
  const Doubles rv1 = new_doubles(n);
  const Doubles w = new_doubles(n);
  const Doubles row = new_doubles(n);
  const Doubles work = new_doubles(bidiagonalise_work(m->rows, n));
  SpreadCopy<RealView> copy;
  if (!rv1 || !w || !row || !work || !copy.make(m->rows, n, real_view(m))) return kOutOfMemory;

  const Bidiagonal b = {m->rows, n, copy.view.x, copy.view.ld, w.get(), rv1.get()};
  const double anorm = bidiagonalise(b, {row.get(), 0}, work.get());
  NoRotations rotations;
  if (const char* message = diagonalise(n, w.get(), rv1.get(), negligible(anorm), rotations))
    return message;
  sort_descending(n, w.get(), [](Index, Index) {});
  for (Index i = 0; i < n; ++i) m->re[i * ld + i] = w[i];
  return nullptr;
}

}  // namespace matrix_pack
