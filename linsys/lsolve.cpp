// The worksheet function lsolve: the solution of M x = v, in place in a copy of v.
#include "linsys/linsys.hpp"
#include "linsys/lu/lubacksub.hpp"
#include "linsys/lu/ludecomp.hpp"
#include "pack/checks.hpp"
#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"

namespace matrix_pack {

namespace {

// x := M^-1 x, with x as long as M; the copy of M becomes its factors.
const char* solve(const aMatrix* m, aMatrix* copy, aMatrix* x, bool complex) {
  if (const char* message = check_square(copy)) return message;
  const Doubles pivots = new_doubles(m->rows);
  if (!pivots) return kOutOfMemory;
  if (const char* message = factor_copy(m, copy, complex, pivots.get(), false)) return message;
  return complex ? clubacksub(copy, pivots.get(), x) : lubacksub(copy, pivots.get(), x);
}

Anyval* lsolve_worker(EfiCallContext* context, aMatrix* m, aMatrix* v) {
  if (m->rows != m->cols) return argument_error(context, 1, kMustBeSquare);
  if (v->cols != 1) return argument_error(context, 2, kMustBeVector);
  // Mark 2, at this one site: kept, hosts rely on it.
  if (v->rows != m->cols) return error_result(context, "incompatible dimension", 2, 0);

  // The messages of the copies are not passed on: a copy fails for want of memory.
  aMatrix* lu = nullptr;
  aMatrix* x = nullptr;
  const bool complex = is_complex(m) || is_complex(v);
  const auto copy_v = is_complex(m) && !is_complex(v) ? matrix_copy_add_imag : matrix_copy;
  if (matrix_copy(context, m, &lu) != nullptr || copy_v(context, v, &x) != nullptr)
    return call_error(context, kOutOfMemory);
  const char* const message = solve(m, lu, x, complex);
  return message == nullptr ? x : call_error(context, message);
}

}  // namespace

Anyval* lsolve(EfiCallContext* context, Anyval* m, Anyval* v) {
  return contained(context, [=]() -> Anyval* {
    if (!is_matrix(m)) return argument_error(context, 1, kMustBeArray);
    if (!is_matrix(v) || as_matrix(v)->cols != 1) return argument_error(context, 2, kMustBeVector);
    return lsolve_worker(context, as_matrix(m), as_matrix(v));
  });
}

}  // namespace matrix_pack
