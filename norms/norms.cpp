// norm1, norm2, norme and normi.
#include "norms/norms.hpp"

#include "norms/norm_cores.hpp"
#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"

namespace matrix_pack {

namespace {

Anyval* norm_result(EfiCallContext* context, const char* message, double norm) {
  return message != nullptr ? call_error(context, message) : scalar_result(context, norm);
}

Anyval* norm_of(EfiCallContext* context, Anyval* v, NormCore real, NormCore complex) {
  if (!is_matrix(v)) return argument_error(context, 1, kMustBeArray);
  const aMatrix* a = as_matrix(v);
  if (a->rows != a->cols) return argument_error(context, 1, kMustBeSquare);
  double norm = 0.0;
  const char* message = is_complex(a) ? complex(a, &norm) : real(a, &norm);
  return norm_result(context, message, norm);
}

Anyval* norm2_of(EfiCallContext* context, Anyval* v) {
  if (!is_matrix(v)) return argument_error(context, 1, kMustBeArray);
  aMatrix* a = as_matrix(v);
  if (a->rows != a->cols) return argument_error(context, 1, kMustBeSquare);
  double norm = 0.0;
  if (is_complex(a)) {
    const char* message = norm2_complex(a, &norm);
    return norm_result(context, message, norm);
  }
  aMatrix* copy = nullptr;
  const char* message = matrix_copy(context, a, &copy);
  if (message == nullptr) message = norm2_real(copy, &norm);
  return norm_result(context, message, norm);
}

}  // namespace

Anyval* norm1(EfiCallContext* context, Anyval* a) {
  return contained(context, [=] { return norm_of(context, a, norm1_real, norm1_complex); });
}

Anyval* norm2(EfiCallContext* context, Anyval* a) {
  return contained(context, [=] { return norm2_of(context, a); });
}

Anyval* norme(EfiCallContext* context, Anyval* a) {
  return guarded(context, [=] { return norm_of(context, a, norme_real, norme_complex); });
}

Anyval* normi(EfiCallContext* context, Anyval* a) {
  return guarded(context, [=] { return norm_of(context, a, normi_guarded, normi_guarded); });
}

}  // namespace matrix_pack
