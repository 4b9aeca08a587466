// The worksheet function lu: P, L and U with P M = L U.
#include <algorithm>
#include <cstring>
#include <utility>

#include "linsys/linsys.hpp"
#include "linsys/lu/ludecomp.hpp"
#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/views.hpp"
#include "pack/results.hpp"

namespace matrix_pack {

namespace {

std::size_t bytes(Index n) {
  return static_cast<std::size_t>(n) * sizeof(double);
}

// The strict lower triangle of lu, zeros above it, `diagonal` on it.
void copy_lower(Index n, ConstRealView lu, double diagonal, double* l) {
  for (Index j = 0; j < n; ++j, l += n) {
    std::memset(l, 0, bytes(j));
    l[j] = diagonal;
    std::memcpy(l + j + 1, lu.column(j) + j + 1, bytes(n - j - 1));
  }
}

// The upper triangle of lu, zeros below it.
void copy_upper(Index n, ConstRealView lu, double* u) {
  for (Index j = 0; j < n; ++j, u += n) {
    std::memcpy(u, lu.column(j), bytes(j + 1));
    std::memset(u + j + 1, 0, bytes(n - j - 1));
  }
}

// The permutation that the row exchanges make of the unit matrix; `order` is n doubles of work.
void fill_permutation(Index n, const double* pivots, double* order, double* p) {
  for (Index i = 0; i < n; ++i) order[i] = static_cast<double>(i);
  for (Index k = 0; k < n; ++k) std::swap(order[k], order[static_cast<Index>(pivots[k])]);
  std::memset(p, 0, bytes(n * n));
  for (Index i = 0; i < n; ++i) p[i + static_cast<Index>(order[i]) * n] = 1.0;
}

// The parts of a factor being made.
struct Factor {
  Doubles re;
  Doubles im;
};

bool allocate(Factor* f, Index n, bool complex) {
  f->re = new_part(n, n);
  if (complex) f->im = new_part(n, n);
  return f->re && (f->im || !complex);
}

// The factor as a matrix, without an imaginary part that is all zero; null without memory.
aMatrix* new_factor_matrix(EfiCallContext* context, int n, Factor f) {
  const auto is_nonzero = [](double x) { return x != 0.0; };
  if (f.im && std::none_of(f.im.get(), f.im.get() + Index{n} * n, is_nonzero)) f.im = nullptr;
  return new_matrix(context, n, n, std::move(f.re), std::move(f.im));
}

Anyval* joined(EfiCallContext* context, int n, Factor p, Factor l, Factor u) {
  aMatrix* const p_matrix = new_factor_matrix(context, n, std::move(p));
  aMatrix* const l_matrix = new_factor_matrix(context, n, std::move(l));
  aMatrix* const u_matrix = new_factor_matrix(context, n, std::move(u));
  aMatrix* out = nullptr;
  if (p_matrix == nullptr || l_matrix == nullptr || u_matrix == nullptr ||
      !pack_three_c(context, p_matrix, l_matrix, u_matrix, &out))
    return sError_OutOfMemory;
  return out;
}

Anyval* lu_worker(EfiCallContext* context, aMatrix* m) {
  if (m->rows < m->cols) return argument_error(context, 1, kMustBeSquare);
  // A matrix with more rows than columns gets as far as the core, which refuses it.
  const int n = m->rows;
  const bool complex = is_complex(m);
  const Doubles pivots = new_doubles(n);
  const Doubles order = new_doubles(n);
  Factor p, l, u;
  if (!pivots || !order || !allocate(&l, n, complex) || !allocate(&u, n, complex) ||
      !allocate(&p, n, false))
    return sError_OutOfMemory;

  aMatrix* work = nullptr;
  if (const char* message = matrix_copy(context, m, &work)) return call_error(context, message);
  if (const char* message = factor_copy(m, work, complex, pivots.get(), false))
    return call_error(context, message);

  const Index ld = work->leading_dimension;
  copy_lower(n, {work->re, ld}, 1.0, l.re.get());
  copy_upper(n, {work->re, ld}, u.re.get());
  if (complex) {
    copy_lower(n, {work->im, ld}, 0.0, l.im.get());
    copy_upper(n, {work->im, ld}, u.im.get());
    for (Index k = 0; k < n; ++k) pivots[static_cast<std::size_t>(k)] -= 1.0;
  }
  fill_permutation(n, pivots.get(), order.get(), p.re.get());
  return joined(context, n, std::move(p), std::move(l), std::move(u));
}

}  // namespace

Anyval* lu(EfiCallContext* context, Anyval* m) {
  return contained(context, [=]() -> Anyval* {
    if (!is_matrix(m)) return call_error(context, kMustBeArray);
    return lu_worker(context, as_matrix(m));
  });
}

}  // namespace matrix_pack
