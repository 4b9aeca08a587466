// A pack that breaks the rules, one rule a function, for tests of what hosts notice.
#include <iterator>

#include "pack/frame/fp_control.hpp"
#include "pack/host_interface.hpp"

namespace {

Anyval* one(EfiCallContext* context) {
  aComplex* scalar = nullptr;
  context->allocator->new_scalar(&scalar);
  scalar->kind = kScalarKind;
  scalar->re = 1.0;
  scalar->im = 0.0;
  return scalar;
}

Anyval* changes_record(EfiCallContext* context, Anyval* a) {
  static_cast<aMatrix*>(a)->rows += 1;
  return one(context);
}

Anyval* changes_element(EfiCallContext* context, Anyval* a) {
  static_cast<aMatrix*>(a)->re[0] += 1.0;
  return one(context);
}

Anyval* leaves_frame(EfiCallContext* context, Anyval* a) {
  static Anyval* root;
  root = a;
  context->evaluator->push_root(&root);
  return one(context);
}

Anyval* pops_too_often(EfiCallContext* context, Anyval*) {
  context->evaluator->pop_frame();
  return one(context);
}

Anyval* changes_control(EfiCallContext* context, Anyval*) {
#if MATRIX_HAS_MXCSR
  _mm_setcsr(_mm_getcsr() | 0x8000);  // Flushes small results to zero.
#endif
  return one(context);
}

Anyval* gives_nothing(EfiCallContext*, Anyval*) {
  return nullptr;
}

Anyval* gives_foreign_value(EfiCallContext*, Anyval*) {
  static aComplex scalar = {{kScalarKind}, 0, 1.0, 0.0};
  return &scalar;
}

Anyval* forgets_imaginary_part(EfiCallContext* context, Anyval*) {
  aComplex* scalar = nullptr;
  context->allocator->new_scalar(&scalar);
  scalar->kind = kScalarKind;
  scalar->re = 1.0;
  return scalar;
}

Anyval* throws(EfiCallContext*, Anyval*) {
  throw 1;
}

Anyval* applies_to_one(EfiCallContext* context, Anyval* function) {
  aComplex argument = {{kScalarKind}, 0, 1.0, 0.0};
  const sCons arguments = {&argument, nullptr};
  Anyval* result = nullptr;
  context->evaluator->apply(function, &arguments, &result);
  return result;
}

#define NAME(text) \
  { {kStringKind}, text, sizeof text }
sString names[] = {
    NAME("changes_record"),      NAME("changes_element"),        NAME("leaves_frame"),
    NAME("pops_too_often"),      NAME("changes_control"),        NAME("gives_nothing"),
    NAME("gives_foreign_value"), NAME("forgets_imaginary_part"), NAME("throws"),
    NAME("applies_to_one")};
#undef NAME

using Handler = Anyval* (*)(EfiCallContext*, Anyval*);
constexpr Handler kHandlers[] = {
    changes_record, changes_element,     leaves_frame,           pops_too_often, changes_control,
    gives_nothing,  gives_foreign_value, forgets_imaginary_part, throws,         applies_to_one};
constexpr std::int32_t kRows = static_cast<std::int32_t>(std::size(kHandlers));

}  // namespace

#pragma GCC visibility push(default)
extern FunctionEntry theEfi[kRows];
extern const std::int32_t numFuncs;
FunctionEntry theEfi[kRows];
const std::int32_t numFuncs = kRows;
#pragma GCC visibility pop

namespace {

[[maybe_unused]] const bool filled = [] {
  for (std::int32_t k = 0; k < kRows; ++k)
    theEfi[k] = {
        Any_to_Any,       nullptr, 12, {}, &names[k], 0, reinterpret_cast<AnyHandler>(kHandlers[k]),
        StripUnit_sString};
  return true;
}();

}  // namespace
