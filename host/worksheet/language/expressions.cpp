#include "host/worksheet/language/expressions.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "fmt/format.h"
#include "host/units/unit.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/matrices.hpp"
#include "host/worksheet/engine/stack.hpp"
#include "host/worksheet/functions/digits.hpp"
#include "host/worksheet/functions/unknown_names.hpp"
#include "host/worksheet/operators/assignment.hpp"

namespace worksheet {

Value TextNode::evaluate(Machine& machine) const {
  aString* const made = machine.store.new_string(text.c_str());
  return made != nullptr ? object_value(made) : machine.out_of_memory(span);
}

Value VariableNode::evaluate(Machine& machine) const {
  if (variable->defined) return machine.value_of(*variable);
  if (constant != nullptr) return number_value(*constant);
  return no_value_error(machine, span, variable->name, variable);
}

namespace {

// The usual cases, operators between plain real numbers, in `a`; false for any other case.
bool combine_reals(Operator op, Value& a, const Value& b) {
  if (!is_plain_real(a) || !is_plain_real(b)) return false;
  switch (op) {
    case Operator::add:
      a.re += b.re;
      return true;
    case Operator::subtract:
      a.re -= b.re;
      return true;
    case Operator::multiply:
      a.re *= b.re;
      return true;
    case Operator::divide:
      a.re /= b.re;
      return true;
    case Operator::less:
      a.re = a.re < b.re ? 1.0 : 0.0;
      return true;
    case Operator::less_equal:
      a.re = a.re <= b.re ? 1.0 : 0.0;
      return true;
    case Operator::greater:
      a.re = a.re > b.re ? 1.0 : 0.0;
      return true;
    case Operator::equal:
      a.re = a.re == b.re ? 1.0 : 0.0;
      return true;
    default:
      return false;
  }
}

}  // namespace

Value ChainNode::evaluate(Machine& machine) const {
  if (stack_is_low()) return machine.fail(span, kStackLimit.message);
  const std::size_t since = machine.store.size();
  Value result = first->evaluate(machine);
  if (is_error(result)) return result;
  for (const Term& term : terms) {
    const Value b = term.operand->evaluate(machine);
    if (is_error(b)) return b;
    if (combine_reals(term.op, result, b)) continue;
    result = binary(machine, term.op, result, b, term.op_span);
    if (is_error(result)) return result;
    if (machine.interrupted) return machine.stopped(span);
    machine.collect(result, since);
  }
  return result;
}

Value PowerNode::evaluate(Machine& machine) const {
  if (stack_is_low()) return machine.fail(span, kStackLimit.message);
  std::vector<Value> values;
  values.reserve(operands.size());
  for (const NodePtr& operand : operands) {
    values.push_back(operand->evaluate(machine));
    if (is_error(values.back())) return values.back();
  }
  Value result = values.back();
  for (std::size_t k = values.size() - 1; k-- > 0 && !is_error(result);)
    result = binary(machine, operators[k], values[k], result, {operands[k]->span.begin, span.end});
  return result;
}

Value LogicNode::evaluate(Machine& machine) const {
  if (stack_is_low()) return machine.fail(span, kStackLimit.message);
  Value result = first->evaluate(machine);
  for (const ChainNode::Term& term : terms) {
    if (is_error(result)) return result;
    const bool decides =
        is_plain_real(result) && (result.re != 0.0) == (term.op == Operator::either);
    if (decides) return number_value(result.re != 0.0 ? 1.0 : 0.0);
    const Value b = term.operand->evaluate(machine);
    if (is_error(b)) return b;
    result = binary(machine, term.op, result, b, term.op_span);
  }
  return result;
}

Value PrefixNode::evaluate(Machine& machine) const {
  Value result = operand->evaluate(machine);
  for (std::size_t k = signs.size(); k-- > 0 && !is_error(result);)
    result = signs[k] == '!' ? opposite(machine, result, span) : negate(machine, result, span);
  return result;
}

Value RangeNode::evaluate(Machine& machine) const {
  Value error = {};
  const Range range = range_of(machine, &error);
  return is_error(error) ? error : worksheet::column_of(machine, range);
}

Range RangeNode::range_of(Machine& machine, Value* error) const {
  std::array<Value, 3> values;
  std::array<Span, 3> places;
  for (std::size_t k = 0; k < bounds.size(); ++k) {
    values[k] =
        stack_is_low() ? machine.fail(span, kStackLimit.message) : bounds[k]->evaluate(machine);
    places[k] = bounds[k]->span;
    if (!is_error(values[k])) continue;
    *error = values[k];
    return {};
  }
  return worksheet::range_of(machine, {values.data(), bounds.size()},
                             {places.data(), bounds.size()}, error);
}

Value SequenceNode::evaluate(Machine& machine) const {
  if (stack_is_low()) return machine.fail(span, kStackLimit.message);
  const std::size_t since = machine.store.size();
  for (const Assignment& one : assignments) {
    const Value value = one.expression->evaluate(machine);
    if (is_error(value)) return value;
    if (is_none(value)) return machine.fail(one.expression->span, "the expression has no value");
    std::array<Value, kTargetLimit.most> parts;
    const Value split = split_value(machine, value, {parts.data(), one.places.size()}, span);
    if (is_error(split)) return split;
    for (std::size_t k = 0; k < one.places.size(); ++k) machine.set_local(one.places[k], parts[k]);
  }
  const Value result = last->evaluate(machine);
  machine.collect(result, since);
  return result;
}

Value NegateNode::evaluate(Machine& machine) const {
  const Value a = operand->evaluate(machine);
  return is_error(a) ? a : negate(machine, a, span);
}

Value PostfixNode::evaluate(Machine& machine) const {
  if (stack_is_low()) return machine.fail(span, kStackLimit.message);
  const std::size_t since = machine.store.size();
  Value result = operand->evaluate(machine);
  Span place = operand->span;
  for (const auto& suffix : suffixes) {
    if (is_error(result)) break;
    if (machine.interrupted) return machine.stopped(span);
    result = suffix->apply(machine, result, place);
    machine.collect(result, since);
    place = suffix->span;
  }
  return result;
}

Value TransposeSuffix::apply(Machine& machine, const Value& a, Span place) const {
  if (row == nullptr) return machine.fail(span, "no pack gives a transpose");
  return machine.call(*row, {{&a, 1}, span, {&place, 1}});
}

namespace {

bool can_have_unit(const Value& v) {
  return is_number(v) || (is_matrix(v) && !contains_ptrs(matrix(v)));
}

}  // namespace

Value UnitSuffix::apply(Machine& machine, const Value& a, Span) const {
  if (!can_have_unit(a)) return machine.fail(span, fmt::format("{} takes no unit", kind_name(a)));
  if (a.unit != nullptr)
    return machine.fail(span, fmt::format("it has a unit already: {}", unit_text(a.unit)));
  return with_unit(a, unit);
}

Value ConversionNode::evaluate(Machine& machine) const {
  const Value a = operand->evaluate(machine);
  if (is_error(a)) return a;
  if (can_have_unit(a) && needs_no_unit(a)) return with_unit(a, unit);
  const auto factor = can_have_unit(a) ? conversion(a.unit, unit) : std::nullopt;
  if (!factor)
    return machine.fail(operand->span, fmt::format("{} cannot be shown in {}{}", unit_text(a.unit),
                                                   unit_text(unit), conversion_hint(a.unit, unit)));
  return with_unit(scaled(machine, a, *factor), unit);
}

Value MatrixNode::evaluate(Machine& machine) const {
  if (stack_is_low()) return machine.fail(span, kStackLimit.message);
  std::vector<Value> values;
  values.reserve(elements.size());
  bool all_numbers = true;
  for (const NodePtr& element : elements) {
    values.push_back(element->evaluate(machine));
    const Value& v = values.back();
    if (is_error(v)) return v;
    if (is_none(v)) return machine.fail(element->span, "an element has no value");
    all_numbers = all_numbers && is_number(v);
  }
  return all_numbers ? of_numbers(machine, values) : nested(machine, values);
}

// A matrix takes one unit as a whole: that of its first element that needs one.
Value MatrixNode::of_numbers(Machine& machine, const std::vector<Value>& values) const {
  const auto first =
      std::find_if(values.begin(), values.end(), [](const Value& v) { return !needs_no_unit(v); });
  const Unit* const unit = first == values.end() ? nullptr : first->unit;
  const std::size_t rows = values.size() / cols;
  MatrixBuilder result(static_cast<std::ptrdiff_t>(rows), static_cast<std::ptrdiff_t>(cols));
  for (std::size_t at = 0; at < values.size(); ++at) {
    const auto factor = needs_no_unit(values[at]) ? 1.0 : common_conversion(values[at].unit, unit);
    if (!factor)
      return machine.fail(
          elements[at]->span,
          fmt::format("the elements of a matrix have one unit, not {} and {}{}", unit_text(unit),
                      unit_text(values[at].unit), conversion_hint(values[at].unit, unit)));
    result.set(static_cast<std::ptrdiff_t>(at % cols * rows + at / cols),
               number(values[at]) * *factor);
  }
  return object_value(result.finish(machine.store), unit);
}

Value MatrixNode::nested(Machine& machine, const std::vector<Value>& values) const {
  const std::size_t rows = values.size() / cols;
  MatrixBuilder result(static_cast<std::ptrdiff_t>(rows), static_cast<std::ptrdiff_t>(cols));
  for (std::size_t at = 0; at < values.size(); ++at) {
    const Value& v = values[at];
    const auto k = static_cast<std::ptrdiff_t>(at % cols * rows + at / cols);
    if (v.unit != nullptr)
      return machine.fail(elements[at]->span, "the elements of a nested array have no units");
    if (is_number(v))
      result.set(k, v.re, v.im);
    else
      result.re()[k] = efi::nested_element(nested_copy(machine, v));
  }
  aMatrix* const made = result.finish(machine.store);
  made->flags |= kHoldsNested;
  return object_value(made);
}

Value CallNode::evaluate(Machine& machine) const {
  if (stack_is_low()) return machine.fail(span, kStackLimit.message);
  const std::size_t since = machine.store.size();
  std::optional<TrustNotes::Question> question;
  if (asks_for_digits()) question.emplace(machine.trust);
  std::array<Value, kMostArguments> values;
  for (std::size_t k = 0; k < arguments.size(); ++k) {
    values[k] = arguments[k]->evaluate(machine);
    if (is_error(values[k])) return values[k];
    if (is_none(values[k])) return machine.fail(places[k], "the argument has no value");
  }
  const Value result = value_of(machine, {{values.data(), arguments.size()}, span, places});
  machine.collect(result, since);
  return result;
}

bool CallNode::asks_for_digits() const {
  return builtin != nullptr && builtin->evaluate == digits_held &&
         !(variable != nullptr && variable->defined);
}

Value CallNode::value_of(Machine& machine, const Call& call) const {
  const bool known = variable == nullptr || variable->defined;
  const Value& held = variable == nullptr ? machine.parameter(parameter) : variable->value;
  if (known && has_kind(held, kFunctionKind))
    return machine.call(function_of(held), call.arguments, span);
  if (builtin != nullptr) return call_builtin(machine, *builtin, call);
  if (row != nullptr) return machine.call(*row, call);
  if (!known)
    return no_function_error(machine, {span.begin, span.begin + name.size()}, name, variable);
  return machine.fail(span, fmt::format("{} is {}, not a function", name, kind_name(held)));
}

Value IfNode::evaluate(Machine& machine) const {
  if (stack_is_low()) return machine.fail(span, kStackLimit.message);
  Value error = {};
  const bool yes = holds(machine, arguments[0]->evaluate(machine), arguments[0]->span, &error);
  return is_error(error) ? error : arguments[yes ? 1 : 2]->evaluate(machine);
}

}  // namespace worksheet
