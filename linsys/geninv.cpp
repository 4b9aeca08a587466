// geninv: the generalized inverse by the singular value decomposition.
#include "linsys/linsys.hpp"
#include "linsys/product_kernels.hpp"
#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/vector_kernels.hpp"
#include "pack/results.hpp"
#include "svd/svd_core.hpp"

namespace matrix_pack {

namespace {

// X = V S+ U^T with S+ the reciprocals of the singular values of A, 0 for those up to tol.
//   m        A, m x n with m >= n; overwritten by U
//   tol      compared with the singular values as they are: deliberately not scaled by the largest
//   inverse  the new n x m matrix X
//   returns  null, "out of memory", or a message of svd_core
//   cost     that of svd_core and 2 m n^2 flops. Each element is a sum in ascending order, from 0
const char* geninv_core(EfiCallContext* context, aMatrix* m, double tol, aMatrix** inverse) {
  const int rows = m->rows;
  const int n = m->cols;
  Doubles x_part = new_zero_part(n, rows);
  Doubles v_part = new_part(n, n);
  Doubles s_part = new_part(n, 1);
  if (!x_part || !v_part || !s_part) return kOutOfMemory;
  aMatrix* const s = new_matrix(context, n, 1, std::move(s_part));
  aMatrix* const x = *inverse = new_matrix(context, n, rows, std::move(x_part));
  aMatrix* const v = new_matrix(context, n, n, std::move(v_part));
  if (s == nullptr || x == nullptr || v == nullptr) return kOutOfMemory;
  if (const char* message = svd_core(m, v, s)) return message;

  // The shared product is subtracted: V is divided by -s, which changes no other bit.
  for (Index k = 0; k < n; ++k) {
    double* const column = v->re + k * n;
    if (s->re[k] <= tol)
      for (Index i = 0; i < n; ++i) column[i] = 0.0;
    else
      vector_kernels().divide(n, -s->re[k], column);
  }
  const ConstRealView u_transposed = {m->re, 1};
  subtract_product(n, rows, n, {v->re, n}, u_transposed, m->leading_dimension, {x->re, n});
  return nullptr;
}

Anyval* geninv_real(EfiCallContext* context, aMatrix* a, double tol) {
  if (is_complex(a)) return argument_error(context, 1, kMustBeReal);
  aMatrix* copy = nullptr;
  if (const char* message = matrix_copy(context, a, &copy)) return call_error(context, message);
  aMatrix* inverse = nullptr;
  if (const char* message = geninv_core(context, copy, tol, &inverse))
    return call_error(context, message);
  return inverse;
}

}  // namespace

Anyval* geninv(EfiCallContext* context, Anyval* a, Anyval* tolerance) {
  return contained(context, [=] {
    // Tied to the call, not to argument 1 as elsewhere: kept, hosts rely on it.
    if (!is_matrix(a)) return call_error(context, kMustBeArray);
    return geninv_real(context, as_matrix(a), context_value(tolerance));
  });
}

}  // namespace matrix_pack
