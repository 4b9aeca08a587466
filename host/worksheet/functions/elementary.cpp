#include "host/worksheet/functions/elementary.hpp"

#include <cmath>

#include "fmt/format.h"
#include "host/worksheet/functions/elementwise.hpp"

namespace worksheet {

namespace {

bool holds_complex(const Value& v) {
  return is_number(v) ? v.im != 0.0 : matrix(v)->im != nullptr;
}

}  // namespace

const char* objection(const Value& v, bool real_only) {
  if (is_matrix(v) && contains_ptrs(matrix(v))) return "may not be nested";
  if (!is_number(v) && !is_matrix(v)) return "must be a number or a matrix";
  return real_only && holds_complex(v) ? "must be real" : nullptr;
}

namespace {

double remainder_with_sign(double a, double b) {
  const double remainder = std::fmod(a, b);
  return remainder != 0.0 && (remainder < 0.0) != (b < 0.0) ? remainder + b : remainder;
}

double real_at(const Value& v, std::ptrdiff_t k) {
  return is_number(v) ? v.re : re_at(matrix(v), k);
}

}  // namespace

// Each is real for a real number wherever a real value exists.

Value square_root(Machine& machine, const Call& call) {
  return map(machine, call, [](const Number& z) {
    if (!is_real(z)) return std::sqrt(z);
    return z.real() < 0.0 ? Number(0.0, std::sqrt(-z.real())) : Number(std::sqrt(z.real()));
  });
}

Value exponential(Machine& machine, const Call& call) {
  return map(machine, call,
             [](const Number& z) { return is_real(z) ? Number(std::exp(z.real())) : std::exp(z); });
}

Value logarithm(Machine& machine, const Call& call) {
  return map(machine, call, [](const Number& z) {
    return is_real(z) && !(z.real() < 0.0) ? Number(std::log(z.real()))
                                           : std::log(is_real(z) ? Number(z.real()) : z);
  });
}

Value sine(Machine& machine, const Call& call) {
  return map(machine, call,
             [](const Number& z) { return is_real(z) ? Number(std::sin(z.real())) : std::sin(z); });
}

Value cosine(Machine& machine, const Call& call) {
  return map(machine, call,
             [](const Number& z) { return is_real(z) ? Number(std::cos(z.real())) : std::cos(z); });
}

Value tangent(Machine& machine, const Call& call) {
  return map(machine, call,
             [](const Number& z) { return is_real(z) ? Number(std::tan(z.real())) : std::tan(z); });
}

Value arc_tangent(Machine& machine, const Call& call) {
  return map(machine, call, [](const Number& z) {
    return is_real(z) ? Number(std::atan(z.real())) : std::atan(z);
  });
}

Value magnitude(Machine& machine, const Call& call) {
  return map(machine, call, [](const Number& z) {
    return Number(is_real(z) ? std::fabs(z.real()) : std::abs(z));
  });
}

Value whole_below(Machine& machine, const Call& call) {
  return map(
      machine, call, [](const Number& z) { return Number(std::floor(z.real())); }, true);
}

Value real_part(Machine& machine, const Call& call) {
  return map(machine, call, [](const Number& z) { return Number(z.real()); });
}

Value imaginary_part(Machine& machine, const Call& call) {
  return map(machine, call, [](const Number& z) { return Number(z.imag()); });
}

Value conjugate(Machine& machine, const Call& call) {
  return map(machine, call,
             [](const Number& z) { return Number(z.real(), is_real(z) ? 0.0 : -z.imag()); });
}

Value modulo(Machine& machine, const Call& call) {
  for (std::size_t k = 0; k < 2; ++k)
    if (const char* reason = objection(call.arguments[k], true))
      return machine.fail(call.places[k], reason);
  const Value& a = call.arguments[0];
  const Value& b = call.arguments[1];
  if (is_number(a) && is_number(b)) return number_value(remainder_with_sign(a.re, b.re));
  const aMatrix* const shape = matrix(is_matrix(a) ? a : b);
  if (is_matrix(a) && is_matrix(b) && !same_shape(matrix(b), shape))
    return machine.fail(call.span, fmt::format("mod needs equal shapes, not {} and {}",
                                               shape_text(shape), shape_text(matrix(b))));
  MatrixBuilder result(shape->rows, shape->cols);
  for (std::ptrdiff_t k = 0; k < element_count(shape); ++k)
    result.re()[k] = remainder_with_sign(real_at(a, k), real_at(b, k));
  return object_value(result.finish(machine.store));
}

}  // namespace worksheet
