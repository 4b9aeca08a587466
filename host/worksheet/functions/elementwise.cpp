#include "host/worksheet/functions/elementwise.hpp"

#include "fmt/format.h"

namespace worksheet {

const char* objection(const Value& v, bool real_only) {
  if (is_matrix(v) && contains_ptrs(matrix(v))) return "may not be nested";
  if (!is_number(v) && !is_matrix(v)) return "must be a number or a matrix";
  const bool is_complex = is_number(v) ? v.im != 0.0 : matrix(v)->im != nullptr;
  return real_only && is_complex ? "must be real" : nullptr;
}

Elements::Elements(const Value& v) : re(&v.re), im(&v.im), rows(1), cols(1) {
  if (!is_matrix(v)) return;
  const aMatrix* const m = matrix(v);
  re = m->re;
  im = m->im;
  rows = m->rows;
  cols = m->cols;
}

Value each_pair(Machine& machine, double (*f)(double, double), const Value& a, const Value& b,
                const Call& call) {
  if (is_number(a) && is_number(b)) return number_value(f(a.re, b.re));
  if (is_matrix(a) && is_matrix(b) && !same_shape(matrix(a), matrix(b))) {
    if (is_number(as_number(b))) return each_pair(machine, f, a, as_number(b), call);
    if (is_number(as_number(a))) return each_pair(machine, f, as_number(a), b, call);
    return machine.fail(call.span, fmt::format("needs equal shapes, not {} and {}",
                                               shape_text(matrix(a)), shape_text(matrix(b))));
  }
  const Elements x(a), y(b);
  const aMatrix* const shape = matrix(is_matrix(a) ? a : b);
  MatrixBuilder result(shape->rows, shape->cols);
  for (std::ptrdiff_t k = 0; k < element_count(shape); ++k)
    result.re()[k] = f(x.at(is_number(a) ? 0 : k).real(), y.at(is_number(b) ? 0 : k).real());
  return object_value(result.finish(machine.store));
}

}  // namespace worksheet
