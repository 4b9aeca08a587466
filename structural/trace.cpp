// tr: the sum of a diagonal.
#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"
#include "structural/structural.hpp"

namespace matrix_pack {

namespace {

// The sum of the diagonal of one part, from the first element on.
double trace_part(const aMatrix* a, const double* part) {
  double sum = 0.0;
  for (int k = 0; k < a->rows; ++k) sum += *elem_ptr(part, a->leading_dimension, k, k);
  return sum;
}

}  // namespace

Anyval* tr(EfiCallContext* context, Anyval* v) {
  return guarded(context, [=] {
    if (!is_matrix(v)) return argument_error(context, 1, kMustBeArray);
    const aMatrix* a = as_matrix(v);
    if (a->rows != a->cols) return argument_error(context, 1, kMustBeSquare);
    // One after the other: each may end the call.
    const double re = trace_part(a, a->re);
    const double im = trace_part(a, a->im);
    return scalar_result(context, re, im);
  });
}

}  // namespace matrix_pack
