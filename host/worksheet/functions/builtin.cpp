#include "host/worksheet/functions/builtin.hpp"

#include <algorithm>
#include <numbers>

#include "fmt/format.h"
#include "host/text/text.hpp"
#include "host/units/unit.hpp"
#include "host/worksheet/data/read_data.hpp"
#include "host/worksheet/data/write_data.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/matrices.hpp"
#include "host/worksheet/functions/building.hpp"
#include "host/worksheet/functions/digits.hpp"
#include "host/worksheet/functions/elementary.hpp"
#include "host/worksheet/functions/elementwise.hpp"
#include "host/worksheet/functions/part_arrays.hpp"
#include "host/worksheet/functions/products.hpp"
#include "host/worksheet/functions/reductions.hpp"
#include "host/worksheet/plot/plot.hpp"

namespace worksheet {

namespace {

using enum UnitUse;

// A new function has a row here and its words in help/language_reference.cpp.
constexpr Builtin kBuiltins[] = {
    {"sqrt", 1, 1, root, each<square_root>},
    {"exp", 1, 1, plain, each<exponential>},
    {"log", 1, 1, plain, each<logarithm>},
    {"log2", 1, 1, plain, each<logarithm_2>},
    {"log10", 1, 1, plain, each<logarithm_10>},
    {"sin", 1, 1, plain, each<sine>},
    {"cos", 1, 1, plain, each<cosine>},
    {"tan", 1, 1, plain, each<tangent>},
    {"asin", 1, 1, plain, each<arc_sine>},
    {"acos", 1, 1, plain, each<arc_cosine>},
    {"atan", 1, 1, plain, each<arc_tangent>},
    {"atan2", 2, 2, compare, each_pair<angle_of>},
    {"sinh", 1, 1, plain, each<hyperbolic_sine>},
    {"cosh", 1, 1, plain, each<hyperbolic_cosine>},
    {"tanh", 1, 1, plain, each<hyperbolic_tangent>},
    {"asinh", 1, 1, plain, each<area_sine>},
    {"acosh", 1, 1, plain, each<area_cosine>},
    {"atanh", 1, 1, plain, each<area_tangent>},
    {"gamma", 1, 1, plain, each<gamma_function>},
    {"abs", 1, 1, keep, each<magnitude>},
    {"arg", 1, 1, drop, each<argument>},
    {"sign", 1, 1, drop, each<sign>},
    {"hypot", 2, 2, same, each_pair<hypotenuse>},
    {"floor", 1, 1, plain, each_real<whole_below>},
    {"ceil", 1, 1, plain, each_real<whole_above>},
    {"round", 1, 1, plain, each_real<nearest_whole>},
    {"trunc", 1, 1, plain, each_real<whole_towards_zero>},
    {"mod", 2, 2, same, each_pair<modulo>},
    {"re", 1, 1, keep, each<real_part>},
    {"im", 1, 1, keep, each<imaginary_part>},
    {"conj", 1, 1, keep, each<conjugate>},
    {"max", 1, kAnyCount, same, maximum},
    {"min", 1, kAnyCount, same, minimum},
    {"sum", 1, 2, keep, sum},
    {"prod", 1, 2, own, product_of_elements},
    {"mean", 1, 2, keep, mean},
    {"cumsum", 1, 2, keep, cumulative_sum},
    {"sort", 1, 2, keep, sort},
    {"any", 1, 2, drop, any},
    {"all", 1, 2, drop, all},
    {"find", 1, 1, drop, find},
    {"numel", 1, 1, drop, number_of_elements},
    {"dot", 2, 2, product, dot},
    {"cross", 2, 2, product, cross},
    {"trace", 1, 1, keep, trace},
    {"det", 1, 1, own, determinant},
    {"zeros", 2, 2, plain, zeros},
    {"ones", 2, 2, plain, ones},
    {"linspace", 3, 3, own, linspace},
    {"blocks", 1, 1, keep, blocks},
    {"digits", 1, 1, own, digits_held},
    {"real_only", 1, 1, keep, real_only},
    {"with_imag", 1, 1, keep, with_imag},
    {"lean", 1, 1, keep, lean},
    {"read", 0, kAnyCount, own, read},
    {"columns", 0, kAnyCount, own, columns},
    {"write", 0, kAnyCount, own, write},
    {"plot", 0, kAnyCount, own, plot},
    {"scatter", 0, kAnyCount, own, scatter},
    {"plot_eigenvals", 0, kAnyCount, own, plot_eigenvals},
    {"plot_svds", 0, kAnyCount, own, plot_svds},
    {"heatmap", 0, kAnyCount, own, heatmap},
};

constexpr double kPi = std::numbers::pi;

bool is_of_one_unit(UnitUse use) {
  return use == same || use == compare;
}

// The unit to which argument k is brought; null for a plain number.
const Unit* unit_for(UnitUse use, const Call& call, std::size_t k) {
  if (use == plain || (!is_of_one_unit(use) && k > 0)) return nullptr;
  if (!is_of_one_unit(use)) return call.arguments[0].unit;
  // That of the first argument that needs one.
  const auto given = std::find_if(call.arguments.begin(), call.arguments.end(),
                                  [](const Value& v) { return !needs_no_unit(v); });
  return given == call.arguments.end() ? nullptr : given->unit;
}

UnitProduct result_unit(UnitUse use, const Call& call) {
  const Unit* const unit = unit_for(use, call, 0);
  if (use == root) return raise(unit, {1, 2});
  if (use == product) return multiply(unit, call.arguments[1].unit);
  return {use == keep || use == same ? unit : nullptr, 1.0};
}

// Calls the function with plain numbers; gives the result what it makes of the units.
Value call_with_units(Machine& machine, const Builtin& function, const Call& call) {
  std::vector<Value> numbers;
  for (std::size_t k = 0; k < call.arguments.size(); ++k) {
    const Value& argument = call.arguments[k];
    const Unit* const unit = unit_for(function.units, call, k);
    const auto factor = needs_no_unit(argument) || function.units == product ? 1.0
                        : is_of_one_unit(function.units) ? common_conversion(argument.unit, unit)
                                                         : conversion(argument.unit, unit);
    if (!factor)
      return machine.fail(
          call.places[k],
          fmt::format("{} needs {} here, not {}", function.name,
                      unit == nullptr ? "a plain number" : unit->name(), unit_text(argument.unit)));
    numbers.push_back(without_unit(scaled(machine, argument, *factor)));
  }
  const Value result = function.evaluate(machine, {numbers, call.span, call.places});
  if (is_error(result)) return result;
  const UnitProduct of_result = result_unit(function.units, call);
  return with_unit(scaled(machine, result, of_result.factor), of_result.unit);
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

std::string counts_text(const Builtin& function) {
  if (function.most == kAnyCount)
    return "at least " + counted(static_cast<std::int64_t>(function.least), "argument");
  const std::string most = counted(static_cast<std::int64_t>(function.most), "argument");
  return function.least == function.most ? most : fmt::format("{} or {}", function.least, most);
}

Value call_builtin(Machine& machine, const Builtin& function, const Call& call) try {
  const std::size_t count = call.arguments.size();
  if (count < function.least || count > function.most)
    return machine.fail(
        call.span, fmt::format("{} takes {}, not {}", function.name, counts_text(function), count));
  if (machine.interrupted) return machine.stopped(call.span);
  for (const Value& value : call.arguments)
    if (value.unit != nullptr && function.units != own)
      return call_with_units(machine, function, call);
  return function.evaluate(machine, call);
} catch (const UnitPowerError& error) {
  return machine.fail(call.places[0], error.what());
}

}  // namespace worksheet
