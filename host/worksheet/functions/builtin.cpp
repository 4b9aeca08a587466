#include "host/worksheet/functions/builtin.hpp"

#include <algorithm>
#include <numbers>

#include "fmt/format.h"
#include "host/packs/unit.hpp"
#include "host/worksheet/data/read_data.hpp"
#include "host/worksheet/data/write_data.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/matrices.hpp"
#include "host/worksheet/functions/digits.hpp"
#include "host/worksheet/functions/elementary.hpp"
#include "host/worksheet/functions/part_arrays.hpp"
#include "host/worksheet/plot/plot.hpp"

namespace worksheet {

namespace {

// A new function has a row here and its words in help/language_reference.cpp.
constexpr Builtin kBuiltins[] = {
    {"sqrt", 1, UnitUse::root, square_root},
    {"exp", 1, UnitUse::plain, exponential},
    {"log", 1, UnitUse::plain, logarithm},
    {"sin", 1, UnitUse::plain, sine},
    {"cos", 1, UnitUse::plain, cosine},
    {"tan", 1, UnitUse::plain, tangent},
    {"atan", 1, UnitUse::plain, arc_tangent},
    {"abs", 1, UnitUse::keep, magnitude},
    {"floor", 1, UnitUse::plain, whole_below},
    {"mod", 2, UnitUse::same, modulo},
    {"re", 1, UnitUse::keep, real_part},
    {"im", 1, UnitUse::keep, imaginary_part},
    {"conj", 1, UnitUse::keep, conjugate},
    {"digits", 1, UnitUse::own, digits_held},
    {"real_only", 1, UnitUse::keep, real_only},
    {"with_imag", 1, UnitUse::keep, with_imag},
    {"lean", 1, UnitUse::keep, lean},
    {"read", kAnyCount, UnitUse::own, read},
    {"columns", kAnyCount, UnitUse::own, columns},
    {"write", kAnyCount, UnitUse::own, write},
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
Value call_with_units(Machine& machine, const Builtin& function, const Call& call) try {
  // That of the first argument that needs one.
  const auto given = std::find_if(call.arguments.begin(), call.arguments.end(),
                                  [](const Value& v) { return !needs_no_unit(v); });
  const bool plain_only = function.units == UnitUse::plain || given == call.arguments.end();
  const Unit* const unit = plain_only ? nullptr : given->unit;
  std::vector<Value> plain;
  for (std::size_t k = 0; k < call.arguments.size(); ++k) {
    const Value& argument = call.arguments[k];
    const auto factor = needs_no_unit(argument)            ? 1.0
                        : function.units == UnitUse::plain ? conversion(argument.unit, unit)
                                                           : common_conversion(argument.unit, unit);
    if (!factor)
      return machine.fail(
          call.places[k],
          fmt::format("{} needs {} here, not {}", function.name,
                      unit == nullptr ? "a plain number" : unit->name(), unit_text(argument.unit)));
    plain.push_back(without_unit(scaled(machine, argument, *factor)));
  }
  const Value result = function.evaluate(machine, {plain, call.span, call.places});
  if (is_error(result)) return result;
  const UnitProduct of_result = result_unit(function.units, unit);
  return with_unit(scaled(machine, result, of_result.factor), of_result.unit);
} catch (const UnitPowerError& error) {
  return machine.fail(call.places[0], error.what());
}

}  // namespace

const Builtin* find_builtin(std::string_view name) {
  for (const Builtin& function : kBuiltins)
    if (name == function.name) return &function;
  return nullptr;
}

const double* find_constant(std::string_view name) {
  return name == "pi" ? &kPi : nullptr;
}

std::vector<std::string> builtin_names() {
  std::vector<std::string> names = {"pi", "if"};
  for (const Builtin& function : kBuiltins) names.emplace_back(function.name);
  return names;
}

Value call_builtin(Machine& machine, const Builtin& function, const Call& call) {
  if (function.argument_count != kAnyCount && call.arguments.size() != function.argument_count)
    return machine.wrong_count(call.span, function.name, function.argument_count,
                               call.arguments.size());
  for (const Value& value : call.arguments)
    if (value.unit != nullptr && function.units != UnitUse::own)
      return call_with_units(machine, function, call);
  return function.evaluate(machine, call);
}

}  // namespace worksheet
