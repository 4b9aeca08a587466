// Inversion by LU factorization and substitution with the unit vectors.
//
// Column j of the inverse solves L U x = P e_j. The vectors P e_j are the columns of the unit
// matrix in another order, so Y with L U Y = I is computed, a block of columns at a time, and its
// columns are then exchanged. Each one goes through the operations of lubacksub on P e_j, the
// skipping of leading zeros included.
#include "linsys/inverse.hpp"

#include <algorithm>

#include "linsys/lu/ludecomp.hpp"
#include "linsys/lu/plain_failure.hpp"
#include "linsys/lu/triangular.hpp"
#include "pack/checks.hpp"
#include "pack/elements.hpp"
#include "pack/exports.hpp"
#include "pack/frame/fast_path.hpp"
#include "pack/frame/fault_message.hpp"
#include "pack/frame/faults.hpp"
#include "pack/frame/fp_scope.hpp"
#include "pack/frame/guard.hpp"
#include "pack/matrix_views.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"

namespace matrix_pack {

namespace {

// The most columns that are solved for together: they stay in cache.
constexpr Index kBlock = kUpperColumns;

// Blocks of equal size, in whole vectors.
Index block_size(Index n) {
  constexpr Index kVector = 8;
  const Index blocks = (n + kBlock - 1) / kBlock;
  return (n + blocks * kVector - 1) / (blocks * kVector) * kVector;
}

constexpr const char* kSuccess = nullptr;

void set_to_unit_columns(Index j0, Index j1, RealView y) {
  std::fill(y.column(j0), y.column(j1), 0.0);
  for (Index j = j0; j < j1; ++j) y(j, j) = 1.0;
}
void set_to_unit_columns(Index j0, Index j1, const ComplexView& y) {
  set_to_unit_columns(j0, j1, RealView{y.re, y.ld});
  std::fill(y.im + j0 * y.ld, y.im + j1 * y.ld, 0.0);
}

bool is_finite_below_diagonal(Index n, RealView a) {
  return substitution_kernels().is_finite_below_diagonal(n, a);
}
bool is_finite_below_diagonal(Index n, const ComplexView& a) {
  return is_finite_below_diagonal(n, RealView{a.re, a.ld}) &&
         is_finite_below_diagonal(n, RealView{a.im, a.ld});
}

// y := (L U)^-1. Within a block the zeros at the top of a column are not skipped. Their products
// leave the zeros below as they are, if L is finite; if it is not, there is one column to a block.
template <class View>
void invert_factors(Index n, View lu, View y, double* work) {
  const Index block = is_finite_below_diagonal(n, lu) ? block_size(n) : 1;
  for (Index j0 = 0; j0 < n; j0 += block) {
    const Index j1 = std::min(n, j0 + block);
    set_to_unit_columns(j0, j1, y);
    solve_lower(n - j0, lu.from(j0, j0), j1 - j0, y.from(j0, j0));
    substitution_kernels_for(lu).solve_upper(n, lu, j1 - j0, y.from(0, j0), work);
  }
}

// y := y P: the exchanges of the factorization, made on columns, from the last one back.
void exchange_columns(Index n, const double* pivots, double origin, double* y) {
  for (Index k = n - 1; k >= 0; --k) {
    const auto m = static_cast<Index>(pivots[k] - origin);
    if (m != k) std::swap_ranges(y + k * n, y + (k + 1) * n, y + m * n);
  }
}

}  // namespace

const char* inv_core(EfiCallContext* context, aMatrix* m, aMatrix** inverse, bool relative_test) {
  if (m->re == nullptr) return kUnknownError;
  if (const char* message = check_square(m)) return message;
  const int n = m->rows;
  Doubles re = new_part(n, n);
  // The pivots first.
  const Work<double, kTriangle> work(n + upper_work(n));
  if (!re || !work) return kOutOfMemory;
  double* const y = re.get();
  double* const pivots = work.get();
  *inverse = new_matrix(context, n, n, std::move(re));
  if (*inverse == nullptr) return kOutOfMemory;

  aMatrix* lu = nullptr;
  if (const char* message = matrix_copy(context, m, &lu)) return message;
  const auto invert = [&] {
    double sign;
    if (const char* message = ludecomp(lu, pivots, &sign, relative_test)) return message;
    invert_factors(n, real_view(lu), RealView{y, n}, pivots + n);
    exchange_columns(n, pivots, 0.0, y);
    return kSuccess;
  };
  return fast_or_plain(kSingularMatrix, invert, [&] {
    return invert_plainly(m, lu, false, pivots, relative_test, y, nullptr);
  });
}

const char* cinv_core(EfiCallContext* context, aMatrix* m, aMatrix** inverse, bool relative_test) {
  if (const char* message = check_square(m)) return message;
  const int n = m->rows;
  Doubles re = new_part(n, n);
  Doubles im = new_part(n, n);
  const Work<double, kTriangle> work(n + upper_work(n));
  if (!re || !im || !work) return kOutOfMemory;
  const ComplexView y = {re.get(), im.get(), n};
  double* const pivots = work.get();
  *inverse = new_matrix(context, n, n, std::move(re), std::move(im));
  if (*inverse == nullptr) return kOutOfMemory;

  aMatrix* lu = nullptr;
  if (const char* message = matrix_copy(context, m, &lu)) return message;
  const auto invert = [&] {
    double sign;
    if (const char* message = cludecomp(lu, pivots, &sign, relative_test)) return message;
    invert_factors(n, complex_view(lu), y, pivots + n);
    exchange_columns(n, pivots, 1.0, y.re);
    exchange_columns(n, pivots, 1.0, y.im);
    return kSuccess;
  };
  return fast_or_plain(kSingularMatrix, invert, [&] {
    return invert_plainly(m, lu, true, pivots, relative_test, y.re, y.im);
  });
}

namespace {

Anyval* inv_worker(EfiCallContext* context, aMatrix* m) {
  // The flag is asked itself, not contains_ptrs: documented.
  if (m->flags & kHoldsNested) return call_error(context, kMayNotBeNested);
  if (m->rows != m->cols) return call_error(context, kMustBeSquare);
  aMatrix* inverse = nullptr;
  const char* const message =
      is_complex(m) ? cinv_core(context, m, &inverse, true) : inv_core(context, m, &inverse, true);
  return message == nullptr ? inverse : call_error(context, message);
}

Anyval* inv_handler(EfiCallContext* context, Anyval* value) {
  switch (value->kind) {
    case kMatrixKind:
      return inv_worker(context, as_matrix(value));
    case kFunctionKind:
    case kOtherFunctionKind:
    case kReferenceKind:
      return mkError(context, "illegal context", 1);
    default:
      return mkError(context, kMustBeArray, 1);
  }
}

}  // namespace

}  // namespace matrix_pack

Anyval* inv(EfiCallContext* context, Anyval* value) {
  using namespace matrix_pack;
  return guarded(context, [=] { return inv_handler(context, value); });
}

Anyval* inv(EfiCallContext* context, aMatrix* matrix) {
  using namespace matrix_pack;
  return contained(context, [=] { return inv_worker(context, matrix); });
}

const char* cinv(EfiCallContext* context, aMatrix* matrix, aMatrix** inverse, bool relative_test) {
  using namespace matrix_pack;
  const FpKeeper keeper;
  try {
    return cinv_core(context, matrix, inverse, relative_test);
  } catch (const SE_FPE_Exception& fault) {
    return fault_message(fault.code);
  } catch (...) {
    return kUnknownError;
  }
}
