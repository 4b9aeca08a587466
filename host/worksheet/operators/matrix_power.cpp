#include "host/worksheet/operators/matrix_power.hpp"

#include <cmath>

#include "fmt/format.h"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/matrices.hpp"
#include "host/worksheet/operators/arithmetic.hpp"

namespace worksheet {

namespace {

// Powers are taken by squaring: the exponent only has to fit an integer.
constexpr double kMostExponent = 1e9;

template <class Entry>
Entry entry_point(const Machine& machine, Entry (Pack::*entry)() const) {
  for (const auto& pack : machine.packs)
    if ((pack.get()->*entry)() != nullptr) return (pack.get()->*entry)();
  return nullptr;
}

Value inverse(Machine& machine, const Value& base, Span span) {
  const auto entry = entry_point(machine, &Pack::inverse);
  if (entry == nullptr) return machine.fail(span, "no pack gives an inverse");
  Anyval* const arguments[] = {base.object};
  const Value result = machine.call_pack(
      "inv", [&] { return entry(&machine.context, base.object); }, arguments, {{}, span, {}});
  machine.audit_call(
      audit::inverse_check(), result, arguments,
      [&](std::span<Anyval* const> values) { return entry(&machine.context, values[0]); }, span);
  return result;
}

Value unit_matrix(Machine& machine, int n, Span span) {
  const auto entry = entry_point(machine, &Pack::identity);
  if (entry == nullptr) return machine.fail(span, "no pack gives a unit matrix");
  return machine.call_pack("identity", [&] { return entry(&machine.context, n); }, {},
                           {{}, span, {}});
}

}  // namespace

Value matrix_power(Machine& machine, const Value& base, const Number& exponent, Span span) {
  const double n = exponent.real();
  if (exponent.imag() != 0.0 || std::floor(n) != n || std::fabs(n) > kMostExponent)
    return machine.fail(span,
                        "the power of a matrix must be an integer; '.^' works element by element");
  if (n >= 0.0 && contains_ptrs(matrix(base)))
    return machine.fail(span, "a nested array has no power");
  if (n >= 0.0 && matrix(base)->rows != matrix(base)->cols)
    return machine.fail(span,
                        fmt::format("the power of a matrix needs a square one, not {}; '.^' works "
                                    "element by element",
                                    shape_text(matrix(base))));
  if (element_count(matrix(base)) == 0) return base;
  if (n == 0.0) return unit_matrix(machine, matrix(base)->rows, span);
  Value square = n < 0.0 ? inverse(machine, base, span) : base;
  Value result = {};
  bool started = false;
  for (auto bits = static_cast<std::int64_t>(std::fabs(n));; bits /= 2) {
    if (is_error(square)) return square;
    if (bits % 2 == 1) {
      result = started ? binary(machine, Operator::multiply, result, square, span) : square;
      started = true;
    }
    if (bits == 1 || is_error(result)) return result;
    if (machine.interrupted) return machine.stopped(span);
    square = binary(machine, Operator::multiply, square, square, span);
  }
}

}  // namespace worksheet
