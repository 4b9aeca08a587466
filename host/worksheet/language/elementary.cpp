#include "host/worksheet/language/elementary.hpp"

#include <cmath>
#include <numbers>

#include "fmt/format.h"
#include "host/packs/unit.hpp"
#include "host/worksheet/data/read_data.hpp"
#include "host/worksheet/engine/matrices.hpp"
#include "host/worksheet/plot/plot.hpp"

namespace worksheet {

namespace {

using Arguments = std::span<const Value>;
using Spans = std::span<const Span>;

// A function of numbers, and what it asks of them.
using NumberFunction = Number (*)(const Number&);

bool is_real(const Number& z) {
  return z.imag() == 0.0;
}

// Each is real for a real number wherever a real value exists.
Number square_root(const Number& z) {
  if (!is_real(z)) return std::sqrt(z);
  return z.real() < 0.0 ? Number(0.0, std::sqrt(-z.real())) : Number(std::sqrt(z.real()));
}
Number exponential(const Number& z) {
  return is_real(z) ? Number(std::exp(z.real())) : std::exp(z);
}
Number logarithm(const Number& z) {
  return is_real(z) && !(z.real() < 0.0) ? Number(std::log(z.real()))
                                         : std::log(is_real(z) ? Number(z.real()) : z);
}
Number sine(const Number& z) {
  return is_real(z) ? Number(std::sin(z.real())) : std::sin(z);
}
Number cosine(const Number& z) {
  return is_real(z) ? Number(std::cos(z.real())) : std::cos(z);
}
Number tangent(const Number& z) {
  return is_real(z) ? Number(std::tan(z.real())) : std::tan(z);
}
Number arc_tangent(const Number& z) {
  return is_real(z) ? Number(std::atan(z.real())) : std::atan(z);
}
Number magnitude(const Number& z) {
  return is_real(z) ? std::fabs(z.real()) : std::abs(z);
}
Number whole_below(const Number& z) {
  return std::floor(z.real());
}
Number real_part(const Number& z) {
  return z.real();
}
Number imaginary_part(const Number& z) {
  return z.imag();
}
Number conjugate(const Number& z) {
  return {z.real(), is_real(z) ? 0.0 : -z.imag()};
}

bool holds_complex(const Value& v) {
  return is_number(v) ? v.im != 0.0 : matrix(v)->im != nullptr;
}

// Null, or why `v` is no argument for a function of numbers.
const char* objection(const Value& v, bool real_only) {
  if (is_matrix(v) && contains_ptrs(matrix(v))) return "may not be nested";
  if (!is_number(v) && !is_matrix(v)) return "must be a number or a matrix";
  return real_only && holds_complex(v) ? "must be real" : nullptr;
}

template <NumberFunction f, bool real_only = false>
Value map(Machine& machine, Arguments arguments, Span, Spans spans) {
  const Value& v = arguments[0];
  if (const char* reason = objection(v, real_only)) return machine.fail(spans[0], reason);
  if (is_number(v)) return number_value(f(number(v)));
  const aMatrix* const m = matrix(v);
  MatrixBuilder result(m->rows, m->cols);
  for (std::ptrdiff_t k = 0; k < element_count(m); ++k)
    result.set(k, f(Number(re_at(m, k), im_at(m, k))));
  return object_value(result.finish(machine.store));
}

// The remainder that has the divisor's sign.
double modulo(double a, double b) {
  const double remainder = std::fmod(a, b);
  return remainder != 0.0 && (remainder < 0.0) != (b < 0.0) ? remainder + b : remainder;
}

Value mod(Machine& machine, Arguments arguments, Span span, Spans spans) {
  const Value& a = arguments[0];
  const Value& b = arguments[1];
  for (std::size_t k = 0; k < 2; ++k)
    if (const char* reason = objection(arguments[k], true)) return machine.fail(spans[k], reason);
  if (is_number(a) && is_number(b)) return number_value(modulo(a.re, b.re));
  const aMatrix* const shape = matrix(is_matrix(a) ? a : b);
  if (is_matrix(a) && is_matrix(b) &&
      (matrix(b)->rows != shape->rows || matrix(b)->cols != shape->cols))
    return machine.fail(span, fmt::format("mod needs equal shapes, not {} and {}",
                                          shape_text(shape), shape_text(matrix(b))));
  MatrixBuilder result(shape->rows, shape->cols);
  auto at = [](const Value& v, std::ptrdiff_t k) {
    return is_number(v) ? v.re : re_at(matrix(v), k);
  };
  for (std::ptrdiff_t k = 0; k < element_count(shape); ++k)
    result.re()[k] = modulo(at(a, k), at(b, k));
  return object_value(result.finish(machine.store));
}

bool all_zero(const double* part, std::ptrdiff_t count) {
  for (std::ptrdiff_t k = 0; k < count; ++k)
    if (part[k] != 0.0) return false;
  return true;
}

void drop(double** part) {
  ::operator delete(*part);
  *part = nullptr;
}

// A copy of a matrix argument, its part arrays changed by `change`; numbers and others are refused.
template <class Change>
Value changed_copy(Machine& machine, const Value& v, Span span, Change change) {
  if (!is_matrix(v)) return machine.fail(span, "must be array");
  aMatrix* const copy = copy_of(machine, matrix(v));
  change(copy);
  return object_value(copy);
}

Value real_only(Machine& machine, Arguments arguments, Span, Spans spans) {
  return changed_copy(machine, arguments[0], spans[0], [](aMatrix* m) { drop(&m->im); });
}

Value with_imag(Machine& machine, Arguments arguments, Span, Spans spans) {
  if (!is_matrix(arguments[0])) return machine.fail(spans[0], "must be array");
  aMatrix* copy = nullptr;
  if (matrix_copy_add_imag(&machine.context, matrix(arguments[0]), &copy) != nullptr)
    return machine.out_of_memory(spans[0]);
  return object_value(copy);
}

Value lean(Machine& machine, Arguments arguments, Span, Spans spans) {
  return changed_copy(machine, arguments[0], spans[0], [](aMatrix* m) {
    for (double** part : {&m->re, &m->im})
      if (*part != nullptr && all_zero(*part, element_count(m))) drop(part);
  });
}

Value read(Machine& machine, Arguments arguments, Span span, Spans spans) {
  if (!is_text(arguments[0])) return machine.fail(spans[0], "must be text: the name of a file");
  try {
    return object_value(read_data(machine, text(arguments[0])));
  } catch (const DataError& error) {
    return machine.fail(span, error.what());
  }
}

constexpr Elementary kElementary[] = {
    {"sqrt", 1, UnitUse::root, map<square_root>},
    {"exp", 1, UnitUse::plain, map<exponential>},
    {"log", 1, UnitUse::plain, map<logarithm>},
    {"sin", 1, UnitUse::plain, map<sine>},
    {"cos", 1, UnitUse::plain, map<cosine>},
    {"tan", 1, UnitUse::plain, map<tangent>},
    {"atan", 1, UnitUse::plain, map<arc_tangent>},
    {"abs", 1, UnitUse::keep, map<magnitude>},
    {"floor", 1, UnitUse::plain, map<whole_below, true>},
    {"mod", 2, UnitUse::same, mod},
    {"re", 1, UnitUse::keep, map<real_part>},
    {"im", 1, UnitUse::keep, map<imaginary_part>},
    {"conj", 1, UnitUse::keep, map<conjugate>},
    {"real_only", 1, UnitUse::keep, real_only},
    {"with_imag", 1, UnitUse::keep, with_imag},
    {"lean", 1, UnitUse::keep, lean},
    {"read", 1, UnitUse::plain, read},
    {"plot", kAnyCount, UnitUse::own, plot},
    {"scatter", kAnyCount, UnitUse::own, scatter},
    {"plot_eigenvals", kAnyCount, UnitUse::own, plot_eigenvals},
    {"plot_svds", kAnyCount, UnitUse::own, plot_svds},
    {"heatmap", kAnyCount, UnitUse::own, heatmap},
};

constexpr double kPi = std::numbers::pi;

UnitProduct result_unit(UnitUse use, const Unit* unit) {
  if (use == UnitUse::root) return raise(unit, {1, 2});
  return {use == UnitUse::plain ? nullptr : unit, 1.0};
}

// Brings all arguments to one unit and gives the result what the function makes of it.
Value call_with_units(Machine& machine, const Elementary& function, Arguments arguments, Span span,
                      Spans spans) {
  const Unit* const unit = function.units == UnitUse::plain ? nullptr : arguments[0].unit;
  std::vector<Value> plain;
  for (std::size_t k = 0; k < arguments.size(); ++k) {
    const auto factor = conversion(arguments[k].unit, unit);
    if (!factor)
      return machine.fail(spans[k], fmt::format("{} needs {} here, not {}", function.name,
                                                unit == nullptr ? "a plain number" : unit->name(),
                                                unit_text(arguments[k].unit)));
    plain.push_back(without_unit(scaled(machine, arguments[k], *factor)));
  }
  const Value result = function.evaluate(machine, plain, span, spans);
  if (is_error(result)) return result;
  const UnitProduct of_result = result_unit(function.units, unit);
  return with_unit(scaled(machine, result, of_result.factor), of_result.unit);
}

}  // namespace

const Elementary* find_elementary(std::string_view name) {
  for (const Elementary& function : kElementary)
    if (name == function.name) return &function;
  return nullptr;
}

const double* find_constant(std::string_view name) {
  return name == "pi" ? &kPi : nullptr;
}

std::vector<std::string> elementary_names() {
  std::vector<std::string> names = {"pi", "if"};
  for (const Elementary& function : kElementary) names.emplace_back(function.name);
  return names;
}

Value call_elementary(Machine& machine, const Elementary& function, Arguments arguments, Span span,
                      Spans spans) {
  if (function.argument_count != kAnyCount && arguments.size() != function.argument_count)
    return machine.fail(
        span, fmt::format("{} takes {} argument{}, not {}", function.name, function.argument_count,
                          function.argument_count == 1 ? "" : "s", arguments.size()));
  for (const Value& value : arguments)
    if (value.unit != nullptr && function.units != UnitUse::own)
      return call_with_units(machine, function, arguments, span, spans);
  return function.evaluate(machine, arguments, span, spans);
}

}  // namespace worksheet
