// The QR decomposition by plane rotations.
#include "linsys/qr.hpp"

#include <algorithm>

#include "linsys/linsys.hpp"
#include "linsys/qr_reduction.hpp"
#include "pack/checks.hpp"
#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"

namespace matrix_pack {

const char* qr_core(EfiCallContext* context, aMatrix* a, aMatrix** q, aMatrix** r) {
  if (const char* message = matrix_copy(context, a, r)) return message;
  const int m = a->rows;
  Doubles q_part = new_part(m, m);
  if (!q_part) return kOutOfMemory;
  if ((*r)->re != nullptr && m > 0) {
    if (!rotate_to_triangle(m, a->cols, (*r)->re, q_part.get())) return kOutOfMemory;
  } else {
    // A matrix without a real array is zero: there is nothing to rotate.
    std::fill_n(q_part.get(), Index{m} * m, 0.0);
    for (Index k = 0; k < m; ++k) q_part[k * m + k] = 1.0;
  }
  *q = new_matrix(context, m, m, std::move(q_part));
  return *q == nullptr ? kOutOfMemory : nullptr;
}

Anyval* qr(EfiCallContext* context, Anyval* v) {
  return contained(context, [=]() -> Anyval* {
    if (!is_matrix(v)) return argument_error(context, 1, kMustBeArray);
    aMatrix* const a = as_matrix(v);
    if (is_complex(a)) return argument_error(context, 1, kMustBeReal);
    if (a->re != nullptr && !holds_elements(a)) return argument_error(context, 1, kSizeMismatch);
    aMatrix* q = nullptr;
    aMatrix* r = nullptr;
    if (const char* message = qr_core(context, a, &q, &r)) return call_error(context, message);
    aMatrix* joined = nullptr;
    return pack_two_r(context, q, r, &joined) ? joined : sError_OutOfMemory;
  });
}

}  // namespace matrix_pack
