#include "host/worksheet/engine/value.hpp"

#include "fmt/format.h"

namespace worksheet {

Anyval kNoValue = {-1};

Value unboxed(Anyval* object) {
  if (object->kind != kScalarKind) return object_value(object);
  const auto* const scalar = static_cast<const aComplex*>(object);
  return number_value(scalar->re, scalar->im);
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
