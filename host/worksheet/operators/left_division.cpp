#include "host/worksheet/operators/left_division.hpp"

#include <algorithm>

#include "fmt/format.h"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/matrices.hpp"
#include "host/worksheet/operators/arithmetic.hpp"

namespace worksheet {

namespace {

Value call_row(Machine& machine, const char* name, std::span<const Value> arguments, Span span) {
  const Row* const row = machine.find_row(name);
  if (row == nullptr) return machine.fail(span, fmt::format("'\\' needs a pack with {}", name));
  const Span places[] = {span, span};
  return machine.call(*row, {arguments, span, {places, arguments.size()}});
}

Value column_of(Machine& machine, const Value& b, std::ptrdiff_t j) {
  const aMatrix* const m = matrix(b);
  MatrixBuilder column(m->rows, 1);
  for (std::ptrdiff_t i = 0; i < m->rows; ++i)
    column.set(i, re_at(m, j * m->rows + i), im_at(m, j * m->rows + i));
  return object_value(column.finish(machine.store), b.unit);
}

// Column after column of X in A X = B.
Value solve_columns(Machine& machine, const Value& a, const Value& b, Span span) {
  const aMatrix* const right = matrix(b);
  MatrixBuilder result(right->rows, right->cols);
  const Unit* unit = nullptr;
  for (std::ptrdiff_t j = 0; j < right->cols; ++j) {
    const std::size_t since = machine.store.size();
    const Value both[] = {a, column_of(machine, b, j)};
    const Value x = call_row(machine, "lsolve", both, span);
    if (!is_matrix(x)) return x;
    for (std::ptrdiff_t i = 0; i < right->rows; ++i)
      result.set(j * right->rows + i, re_at(matrix(x), i), im_at(matrix(x), i));
    unit = x.unit;
    machine.collect({}, since);
  }
  return object_value(result.finish(machine.store), unit);
}

bool is_plain_matrix(const Value& v) {
  return is_matrix(v) && !contains_ptrs(matrix(v));
}

}  // namespace

Value left_division(Machine& machine, const Value& a, const Value& b, Span span) {
  const Value divisor = as_number(a);
  if (is_number(divisor)) return binary(machine, Operator::divide, b, divisor, span);
  if (!is_plain_matrix(a) || !is_plain_matrix(b))
    return machine.fail(span, "'\\' takes a matrix on either side, or a number on the left");
  const aMatrix* const m = matrix(a);
  if (m->rows < m->cols || m->rows != matrix(b)->rows)
    return machine.fail(
        span,
        fmt::format("'\\' does not solve for {} and {}: {}", shape_text(m), shape_text(matrix(b)),
                    m->rows < m->cols ? "there are more unknowns than equations"
                                      : "the rows are not as many"));
  if (m->rows == m->cols && matrix(b)->cols == 1) {
    const Value both[] = {a, b};
    return call_row(machine, "lsolve", both, span);
  }
  if (m->rows == m->cols) return solve_columns(machine, a, b, span);
  const Value inverse = call_row(machine, "geninv", {&a, 1}, span);
  return is_error(inverse) ? inverse : binary(machine, Operator::multiply, inverse, b, span);
}

}  // namespace worksheet
