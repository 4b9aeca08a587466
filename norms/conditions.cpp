// cond1, cond2, conde and condi.
#include <cmath>

#include "linsys/inverse.hpp"
#include "norms/norm_cores.hpp"
#include "norms/norms.hpp"
#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"
#include "svd/svds_core.hpp"

namespace matrix_pack {

namespace {

// |A| |A^-1| in one norm. The inverse is formed without the relative singularity test: a nearly
// singular matrix gives a large number, not a message.
const char* norm_product(EfiCallContext* context, aMatrix* a, NormCore norm, double* condition) {
  const auto invert = is_complex(a) ? cinv_core : inv_core;
  aMatrix* inverse = nullptr;
  if (const char* message = invert(context, a, &inverse, false)) return message;
  double of_matrix = 0.0;
  double of_inverse = 0.0;
  if (const char* message = norm(a, &of_matrix)) return message;
  if (const char* message = norm(inverse, &of_inverse)) return message;
  *condition = of_inverse * of_matrix;
  return nullptr;
}

// The ratio of the extreme singular values of a real matrix.
const char* value_ratio(EfiCallContext* context, aMatrix* a, double* condition) {
  aMatrix* values = nullptr;
  if (const char* message = matrix_copy(context, a, &values)) return message;
  if (const char* message = svds_core(values)) return message;
  const int n = values->rows;
  const double last = n == 0 ? 0.0 : elem_re(values, n - 1, n - 1);
  if (last == 0.0) return kSingularMatrix;
  *condition = std::fabs(elem_re(values, 0, 0) / last);
  return nullptr;
}

// Where "must be square" is tied to. That of cond1 has mark 1 and names the call: kept, hosts rely
// on it.
struct ShapeError {
  int mark;
  int arg;
};

Anyval* condition_of(EfiCallContext* context, Anyval* v, NormCore real, NormCore complex,
                     const ShapeError& not_square = {0, 1}) {
  // Tied to the call, not to argument 1 as elsewhere: kept, hosts rely on it.
  if (!is_matrix(v)) return call_error(context, kMustBeArray);
  aMatrix* a = as_matrix(v);
  if (a->rows != a->cols)
    return error_result(context, kMustBeSquare, not_square.mark, not_square.arg);
  double condition = 0.0;
  const NormCore norm = is_complex(a) ? complex : real;
  const char* message = norm == nullptr ? value_ratio(context, a, &condition)
                                        : norm_product(context, a, norm, &condition);
  return message != nullptr ? call_error(context, message) : scalar_result(context, condition);
}

}  // namespace

Anyval* cond1(EfiCallContext* context, Anyval* a) {
  return contained(context, [=] {
    return condition_of(context, a, norm1_real, norm1_complex, {1, 0});
  });
}

// For a real matrix the ratio of its singular values, without an inverse.
Anyval* cond2(EfiCallContext* context, Anyval* a) {
  return guarded(context, [=] { return condition_of(context, a, nullptr, norm2_complex); });
}

Anyval* conde(EfiCallContext* context, Anyval* a) {
  return guarded(context, [=] { return condition_of(context, a, norme_real, norme_complex); });
}

Anyval* condi(EfiCallContext* context, Anyval* a) {
  return guarded(context, [=] { return condition_of(context, a, normi_real, normi_complex); });
}

}  // namespace matrix_pack
