// matrix(m, n, f): the one function that calls back into the worksheet.
#include <cmath>

#include "pack/elements.hpp"
#include "pack/frame/evaluator_frame.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"
#include "structural/structural.hpp"

namespace matrix_pack {

namespace {

constexpr double kLargestSize = 8000000.0;

// False for a NaN too. An infinity passes: its size is refused next.
bool near_integer(double x) {
  return !std::isnan(x) && !(std::fabs(x - std::floor(x + 0.1)) > 1e-10);
}

// f(i, j): null when f returned a scalar, whose parts are stored; else what f returned, which is
// the ready-made value for exhausted memory when the evaluator had nothing to return.
Anyval* call_function(EfiCallContext* context, int i, int j, double* re, double* im, Anyval* f) {
  *re = 0.0;
  *im = 0.0;
  Anyval* word = nullptr;
  Anyval* returned = nullptr;
  EvaluatorFrame frame(context, &word);
  frame.add(&returned);

  aComplex row_index = {{kScalarKind}, 0, static_cast<double>(i), 0.0};
  aComplex col_index = {{kScalarKind}, 0, static_cast<double>(j), 0.0};
  const sCons second = {&col_index, nullptr};
  const sCons first = {&row_index, &second};
  context->evaluator->apply(f, &first, &returned);
  if (returned == nullptr) return sError_OutOfMemory;
  if (!is_scalar(returned)) return returned;
  *re = as_scalar(returned)->re;
  *im = as_scalar(returned)->im;
  return nullptr;
}

// What f(0, 0) returned instead of a scalar, as an error at the third argument.
Anyval* probe_error(EfiCallContext* context, Anyval* returned) {
  if (returned->kind != kErrorKind) return argument_error(context, 3, kNonScalar);
  const aString* message = static_cast<aError*>(returned)->message;
  aError* error = aError::mk(context->allocator, message, 0, 3, nullptr);
  return error != nullptr ? error : sError_OutOfMemory;
}

Anyval* fill(EfiCallContext* context, int rows, int cols, Anyval* f) {
  Doubles re = new_part(rows, cols);
  if (!re) return sError_OutOfMemory;
  Doubles im = new_part(rows, cols);
  if (!im) return sError_OutOfMemory;
  bool any_imaginary = false;
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < cols; ++j) {
      const std::ptrdiff_t at = element_index(rows, i, j);
      if (Anyval* returned = call_function(context, i, j, &re[at], &im[at], f)) {
        if (returned->kind == kErrorKind) return returned;
        return argument_error(context, 3, kNonScalar);
      }
      any_imaginary |= im[at] != 0.0;
    }
  }
  if (!any_imaginary) im.reset();
  return matrix_result(new_matrix(context, rows, cols, std::move(re), std::move(im)));
}

Anyval* matrix_worker(EfiCallContext* context, const aComplex* m, const aComplex* n, Anyval* f) {
  Anyval* local = nullptr;
  EvaluatorFrame frame(context, &f);
  frame.add(&f);
  frame.add(&local);

  if (m->im != 0.0) return argument_error(context, 1, kMustBeReal);
  if (n->im != 0.0) return argument_error(context, 2, kMustBeReal);
  if (m->re <= 0.0) return argument_error(context, 1, "must be positive");
  // Tied to argument 1, not 2: kept, hosts rely on it.
  if (n->re < 1.0) return argument_error(context, 1, "incorrect column dimensions");
  if (!near_integer(m->re)) return argument_error(context, 1, kMustBeInteger);
  if (m->re > kLargestSize) return argument_error(context, 1, kSizeTooLarge);
  if (!near_integer(n->re)) return argument_error(context, 2, kMustBeInteger);
  if (n->re > kLargestSize) return argument_error(context, 2, kSizeTooLarge);
  if (m->re * n->re > kLargestSize) return call_error(context, kSizeTooLarge);

  double re;
  double im;
  if (Anyval* returned = call_function(context, 0, 0, &re, &im, f))
    return probe_error(context, returned);
  // floor(x), not floor(x + 0.1) as in the test: a size just below an integer loses one. Kept.
  return fill(context, static_cast<int>(std::floor(m->re)), static_cast<int>(std::floor(n->re)), f);
}

}  // namespace

Anyval* matrix(EfiCallContext* context, Anyval* m, Anyval* n, Anyval* f) {
  return contained(context, [=] {
    if (!is_scalar(m)) return argument_error(context, 1, kNonScalar);
    if (!is_scalar(n)) return argument_error(context, 2, kNonScalar);
    if (f->kind != kFunctionKind && f->kind != kOtherFunctionKind)
      return argument_error(context, 3, "must be function");
    return matrix_worker(context, as_scalar(m), as_scalar(n), f);
  });
}

}  // namespace matrix_pack
