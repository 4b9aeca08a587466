#include "host/worksheet/operators/arithmetic.hpp"

#include <cstring>

#include "fmt/format.h"
#include "host/units/unit.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/matrices.hpp"
#include "host/worksheet/operators/elements.hpp"
#include "host/worksheet/operators/left_division.hpp"
#include "host/worksheet/operators/matrix_power.hpp"

namespace worksheet {

namespace {

// c := c + s A b for one column of a product, by the columns of A.
void add_column(double* c, double s, const double* a, const double* b, std::ptrdiff_t m,
                std::ptrdiff_t inner) {
  for (std::ptrdiff_t k = 0; k < inner; ++k) {
    const double factor = s * b[k];
    for (std::ptrdiff_t i = 0; i < m; ++i) c[i] += factor * a[k * m + i];
  }
}

// C := C + s A B for one pair of part arrays. Stops between two columns when it is interrupted.
void add_product(const Machine& machine, double* c, double s, const double* a, const double* b,
                 std::ptrdiff_t m, std::ptrdiff_t inner, std::ptrdiff_t n) {
  if (a == nullptr || b == nullptr) return;
  for (std::ptrdiff_t j = 0; j < n && !machine.interrupted; ++j)
    add_column(c + j * m, s, a, b + j * inner, m, inner);
}

Value matrix_product(Machine& machine, const aMatrix* a, const aMatrix* b, Span span) {
  if (a->cols != b->rows)
    return machine.fail(span, fmt::format("cannot multiply {} by {}: the columns of the first are "
                                          "not as many as the rows of the second",
                                          shape_text(a), shape_text(b)));
  MatrixBuilder c(a->rows, b->cols);
  auto add = [&](double* part, double sign, const double* x, const double* y) {
    add_product(machine, part, sign, x, y, a->rows, a->cols, b->cols);
  };
  add(c.re(), 1.0, a->re, b->re);
  if (a->im != nullptr || b->im != nullptr) {
    add(c.re(), -1.0, a->im, b->im);
    add(c.need_im(), 1.0, a->re, b->im);
    add(c.im(), 1.0, a->im, b->re);
  }
  if (machine.interrupted) return machine.stopped(span);
  return object_value(c.finish(machine.store));
}

bool is_operand(const Value& v) {
  return is_number(v) || (is_matrix(v) && !contains_ptrs(matrix(v)));
}

Value compare_texts(Machine& machine, Operator op, const Value& a, const Value& b, Span span) {
  const bool same = std::strcmp(text(a), text(b)) == 0;
  if (op == Operator::equal) return number_value(truth(same));
  if (op == Operator::not_equal) return number_value(truth(!same));
  return machine.fail(span, fmt::format("text has no '{}'", operator_text(op)));
}

}  // namespace

const char* operator_text(Operator op) {
  constexpr const char* kTexts[] = {"+", "-",  "*", "/",  "^",  "\\", ".*", "./", ".^",
                                    "<", "<=", ">", ">=", "==", "!=", "&&", "||"};
  return kTexts[static_cast<int>(op)];
}

namespace {

// Whether the operator takes two matrices of these shapes.
bool fit(Operator op, const aMatrix* a, const aMatrix* b) {
  return op == Operator::multiply ? a->cols == b->rows : elements_fit(op, a, b);
}

bool has_imaginary_part(const Value& v) {
  return is_number(v) ? v.im != 0.0 : matrix(v)->im != nullptr;
}

// Why the operator does not work on these operands; empty if it does.
std::string objection(Operator op, const Value& a, const Value& b) {
  for (const Value* v : {&a, &b})
    if (!is_operand(*v))
      return fmt::format("'{}' does not take {}", operator_text(op),
                         is_matrix(*v) ? "a nested array" : kind_name(*v));
  const bool ordered = is_comparison(op) && op != Operator::equal && op != Operator::not_equal;
  if (ordered && (has_imaginary_part(a) || has_imaginary_part(b)))
    return "complex numbers have no order";
  if (op == Operator::power && (is_matrix(a) || is_matrix(b)))
    return "'^' takes a square matrix to an integer power; '.^' works element by element";
  const bool are_matrices = is_matrix(a) && is_matrix(b) && op != Operator::multiply;
  if (are_matrices && !elements_fit(op, matrix(a), matrix(b)))
    return fmt::format("'{}' needs equal shapes, not {} and {}", operator_text(op),
                       shape_text(matrix(a)), shape_text(matrix(b)));
  return {};
}

Value plain_binary(Machine& machine, Operator op, const Value& a, const Value& b, Span span) {
  const bool is_power = op == Operator::power;
  if (is_power && is_matrix(b) && is_number(as_number(b)))
    return plain_binary(machine, op, a, as_number(b), span);
  if (is_matrix(a) && is_matrix(b) && !is_power && !fit(op, matrix(a), matrix(b))) {
    if (is_number(as_number(b))) return plain_binary(machine, op, a, as_number(b), span);
    if (is_number(as_number(a))) return plain_binary(machine, op, as_number(a), b, span);
  }
  if (is_text(a) && is_text(b)) return compare_texts(machine, op, a, b, span);
  if (is_power && is_matrix(a) && is_number(b)) return matrix_power(machine, a, number(b), span);
  if (const std::string reason = objection(op, a, b); !reason.empty())
    return machine.fail(span, reason);
  if (is_number(a) && is_number(b))
    return number_value(element_result(for_elements(op), number(a), number(b)));
  if (is_matrix(a) && is_matrix(b) && op == Operator::multiply)
    return matrix_product(machine, matrix(a), matrix(b), span);
  return elementwise(machine, op, a, b);
}

// The result of a product, power or quotient of values whose units combine to `unit`.
Value combined(Machine& machine, Operator op, const Value& a, const Value& b,
               const UnitProduct& unit, Span span) {
  const Value result = plain_binary(machine, op, without_unit(a), without_unit(b), span);
  return is_error(result) ? result : with_unit(scaled(machine, result, unit.factor), unit.unit);
}

Value power_with_units(Machine& machine, Operator op, const Value& a, const Value& b, Span span) {
  const auto factor = conversion(b.unit, nullptr);
  if (!factor)
    return machine.fail(span,
                        fmt::format("an exponent must be plain; it has {}", unit_text(b.unit)));
  const Value exponent = with_unit(scaled(machine, as_number(b), *factor), nullptr);
  if (a.unit == nullptr) return plain_binary(machine, op, a, exponent, span);
  const auto power = is_plain_real(exponent) ? to_rational(exponent.re) : std::nullopt;
  if (!power) return machine.fail(span, fmt::format("no such power of {}", unit_text(a.unit)));
  return combined(machine, op, a, exponent, raise(a.unit, *power), span);
}

Value binary_with_units(Machine& machine, Operator op, const Value& a, const Value& b, Span span) {
  const Operator kind = for_elements(op);
  if (kind == Operator::multiply)
    return combined(machine, op, a, b, multiply(a.unit, b.unit), span);
  if (kind == Operator::divide) return combined(machine, op, a, b, divide(a.unit, b.unit), span);
  if (kind == Operator::power) return power_with_units(machine, op, a, b, span);
  if (is_logic(op))
    return machine.fail(span, fmt::format("'{}' needs plain values, not {}", operator_text(op),
                                          unit_text(a.unit != nullptr ? a.unit : b.unit)));
  const Unit* const unit = needs_no_unit(a) ? b.unit : a.unit;
  const auto factor = needs_no_unit(b) ? 1.0 : common_conversion(b.unit, unit);
  if (!factor)
    return machine.fail(
        span, fmt::format("'{}' needs values of one unit: {} and {}{}", operator_text(op),
                          unit_text(a.unit), unit_text(b.unit), conversion_hint(b.unit, unit)));
  const Value same = with_unit(scaled(machine, b, *factor), nullptr);
  const Value result = plain_binary(machine, op, without_unit(a), same, span);
  return is_comparison(op) || is_error(result) ? result : with_unit(result, unit);
}

}  // namespace

Value binary(Machine& machine, Operator op, const Value& a, const Value& b, Span span) {
  if (op == Operator::left_divide) return left_division(machine, a, b, span);
  if (a.unit == nullptr && b.unit == nullptr) return plain_binary(machine, op, a, b, span);
  try {
    return binary_with_units(machine, op, a, b, span);
  } catch (const UnitPowerError& error) {
    return machine.fail(span, error.what());
  }
}

Value negate(Machine& machine, const Value& a, Span span) {
  if (is_number(a)) return with_unit(number_value(-a.re, a.im == 0.0 ? 0.0 : -a.im), a.unit);
  if (!is_operand(a))
    return machine.fail(
        span, fmt::format("'-' does not take {}", is_matrix(a) ? "a nested array" : kind_name(a)));
  const aMatrix* const m = matrix(a);
  MatrixBuilder result(m->rows, m->cols);
  for (std::ptrdiff_t k = 0; k < element_count(m); ++k) result.set(k, -re_at(m, k), -im_at(m, k));
  return object_value(result.finish(machine.store), a.unit);
}

Value opposite(Machine& machine, const Value& a, Span span) {
  if (!is_operand(a) || a.unit != nullptr)
    return machine.fail(span,
                        fmt::format("'!' does not take {}", a.unit != nullptr ? unit_text(a.unit)
                                                            : is_matrix(a)    ? "a nested array"
                                                                              : kind_name(a)));
  if (is_number(a)) return number_value(truth(number(a) == 0.0));
  return elementwise(machine, Operator::equal, a, number_value(0.0));
}

bool holds(Machine& machine, const Value& condition, Span span, Value* error) {
  const Value v = as_number(condition);
  if (is_error(v))
    *error = v;
  else if (!is_plain_real(v))
    *error = machine.fail(span, "a condition must be a plain real number");
  return v.re != 0.0;
}

}  // namespace worksheet
