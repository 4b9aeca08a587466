// identity and diag: square matrices from a size or a diagonal.
#include <cmath>

#include "pack/elements.hpp"
#include "pack/exports.hpp"
#include "pack/frame/evaluator_frame.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"
#include "structural/structural.hpp"

using namespace matrix_pack;

namespace {

constexpr double kLargestIdentity = 100000.0;

Anyval* identity_of_order(EfiCallContext* context, int n) {
  Doubles re = new_zero_part(n, n);
  if (!re) return sError_OutOfMemory;
  for (std::int64_t k = 0; k < n; ++k) re[static_cast<std::size_t>(k * (n + 1LL))] = 1.0;
  return matrix_result(new_matrix(context, n, n, std::move(re)));
}

Anyval* identity_of_number(EfiCallContext* context, aComplex* n) {
  const ArgumentFrame frame(context, n);
  if (n->im != 0.0 || nonint(n->re)) return argument_error(context, 1, kMustBeInteger);
  if (n->re <= 0.0) return argument_error(context, 1, "domain error");
  if (std::fabs(n->re) > kLargestIdentity) return argument_error(context, 1, kSizeTooLarge);
  return identity_of_order(context, static_cast<int>(n->re));
}

Anyval* diag_worker(EfiCallContext* context, aMatrix* v) {
  const ArgumentFrame frame(context, v);
  if (v->cols != 1) return argument_error(context, 1, kMustBeVector);
  const int n = v->rows;
  Doubles re = new_zero_part(n, n);
  if (!re) return sError_OutOfMemory;
  Doubles im;
  if (is_complex(v)) {
    im = new_zero_part(n, n);
    if (!im) return sError_OutOfMemory;
  }
  aMatrix* result = new_matrix(context, n, n, std::move(re), std::move(im));
  if (result == nullptr) return sError_OutOfMemory;
  for (int k = 0; k < n; ++k) set_elem(result, k, k, elem_re(v, k, 0), elem_im(v, k, 0));
  return result;
}

}  // namespace

Anyval* identity(EfiCallContext* context, int n) {
  return contained(context, [=] { return identity_of_order(context, n); });
}

Anyval* identity(EfiCallContext* context, aComplex* n) {
  return contained(context, [=] { return identity_of_number(context, n); });
}

Anyval* matrix_pack::identity(EfiCallContext* context, Anyval* n) {
  return contained(context, [=] {
    if (!is_scalar(n)) return argument_error(context, 1, kNonScalar);
    return identity_of_number(context, as_scalar(n));
  });
}

Anyval* matrix_pack::diag(EfiCallContext* context, Anyval* v) {
  return contained(context, [=] {
    if (!is_matrix(v)) return argument_error(context, 1, kMustBeVector);
    return diag_worker(context, as_matrix(v));
  });
}
