// rows, cols, last, length: how far an array extends.
#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"
#include "structural/structural.hpp"

namespace matrix_pack {

namespace {

// One extent of an array; 0 for a scalar, which deliberately has neither rows nor columns.
Anyval* extent(EfiCallContext* context, Anyval* a, std::int32_t aMatrix::*size) {
  if (is_scalar(a)) return scalar_result(context, 0.0);
  if (is_matrix(a)) return scalar_result(context, as_matrix(a)->*size);
  return patch_error(context, kMustBeArray, a, 1);
}

bool is_column(Anyval* v) {
  return is_matrix(v) && as_matrix(v)->cols == 1;
}

}  // namespace

Anyval* rows(EfiCallContext* context, Anyval* a) {
  return guarded(context, [=] { return extent(context, a, &aMatrix::rows); });
}

Anyval* cols(EfiCallContext* context, Anyval* a) {
  return guarded(context, [=] { return extent(context, a, &aMatrix::cols); });
}

Anyval* last(EfiCallContext* context, Anyval* v, Anyval* origin) {
  return contained(context, [=] {
    if (!is_column(v)) return argument_error(context, 1, kMustBeVector);
    return scalar_result(context, (as_matrix(v)->rows - 1) + context_value(origin));
  });
}

Anyval* length(EfiCallContext* context, Anyval* v) {
  return contained(context, [=] {
    if (!is_matrix(v)) return argument_error(context, 1, kMustBeVector);
    // Mark 1 and the call, unlike the check above and `last`: kept, hosts rely on it.
    if (!is_column(v)) return error_result(context, kMustBeVector, 1, 0);
    return scalar_result(context, as_matrix(v)->rows);
  });
}

}  // namespace matrix_pack
