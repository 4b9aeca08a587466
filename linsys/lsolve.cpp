// The worksheet function lsolve: the solution of M x = v, in place in a copy of v.
#include "linsys/linsys.hpp"
#include "linsys/lu/lubacksub.hpp"
#include "linsys/lu/ludecomp.hpp"
#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/results.hpp"

namespace matrix_pack {

namespace {

// x := M^-1 x; m becomes its factors.
const char* solve_real(aMatrix* m, aMatrix* x) {
  if (m->rows < 1 || m->cols < 1 || x->rows < 1) return "invalid dimension";
  if (m->rows != m->cols) return "must be square";
  if (x->rows != m->rows) return "array size mismatch";
  const Doubles pivots = new_doubles(m->rows);
  if (!pivots) return "out of memory";
  double sign;
  if (const char* message = ludecomp(m, pivots.get(), &sign, false)) return message;
  return lubacksub(m, pivots.get(), x);
}

const char* solve_complex(aMatrix* m, aMatrix* x) {
  if (m->rows < 1 || m->cols < 1) return "invalid dimension";
  if (m->rows != m->cols) return "must be square";
  const Doubles pivots = new_doubles(m->rows);
  if (!pivots) return "out of memory";
  double sign;
  if (const char* message = cludecomp(m, pivots.get(), &sign, false)) return message;
  return clubacksub(m, pivots.get(), x);
}

Anyval* lsolve_worker(EfiCallContext* context, aMatrix* m, aMatrix* v) {
  if (m->rows != m->cols) return argument_error(context, 1, "must be square");
  if (v->cols != 1) return argument_error(context, 2, "must be vector");
  // Mark 2, at this one site: kept, hosts rely on it.
  if (v->rows != m->cols) return error_result(context, "incompatible dimension", 2, 0);

  // The messages of the copies are not passed on: a copy fails for want of memory.
  aMatrix* lu = nullptr;
  aMatrix* x = nullptr;
  const bool complex = is_complex(m) || is_complex(v);
  const auto copy_v = is_complex(m) && !is_complex(v) ? matrix_copy_add_imag : matrix_copy;
  if (matrix_copy(context, m, &lu) != nullptr || copy_v(context, v, &x) != nullptr)
    return call_error(context, "out of memory");
  const char* const message = complex ? solve_complex(lu, x) : solve_real(lu, x);
  return message == nullptr ? x : call_error(context, message);
}

}  // namespace

Anyval* lsolve(EfiCallContext* context, Anyval* m, Anyval* v) {
  return contained(context, [=]() -> Anyval* {
    if (!is_matrix(m)) return argument_error(context, 1, "must be array");
    if (!is_matrix(v) || as_matrix(v)->cols != 1)
      return argument_error(context, 2, "must be vector");
    return lsolve_worker(context, as_matrix(m), as_matrix(v));
  });
}

}  // namespace matrix_pack
