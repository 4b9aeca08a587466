#include "host/worksheet/values/value.hpp"

#include "fmt/format.h"

namespace worksheet {

Anyval kNoValue = {-1};

Value unboxed(Anyval* object) {
  if (object->kind != kScalarKind) return object_value(object);
  const auto* const scalar = static_cast<const aComplex*>(object);
  return number_value(scalar->re, scalar->im);
}

Value as_number(const Value& v) {
  if (!is_matrix(v) || element_count(matrix(v)) != 1 || contains_ptrs(matrix(v))) return v;
  return with_unit(number_value(re_at(matrix(v), 0), im_at(matrix(v), 0)), v.unit);
}

bool needs_no_unit(const Value& v) {
  if (v.unit != nullptr) return false;
  if (is_number(v)) return v.re == 0.0 && v.im == 0.0;
  if (!is_matrix(v)) return false;
  const aMatrix* const m = matrix(v);
  for (std::ptrdiff_t k = 0; k < element_count(m); ++k)
    if (re_at(m, k) != 0.0 || im_at(m, k) != 0.0) return false;
  return true;
}

const char* kind_name(const Value& v) {
  if (is_number(v)) return "a number";
  if (is_none(v)) return "nothing";
  if (is_matrix(v)) return "a matrix";
  if (is_text(v)) return "text";
  if (is_function(v)) return "a function";
  return is_error(v) ? "an error" : "a value of an unknown kind";
}

std::string shape_text(const aMatrix* m) {
  return fmt::format("{} x {}", m->rows, m->cols);
}

}  // namespace worksheet
