#include "host/worksheet/language/steps.hpp"

#include <new>

#include "fmt/format.h"
#include "host/worksheet/engine/stack.hpp"
#include "host/worksheet/functions/unknown_names.hpp"
#include "host/worksheet/operators/assignment.hpp"
#include "host/worksheet/operators/part_assignment.hpp"

namespace worksheet {

namespace {

Flow failed(Value* error, const Value& value) {
  *error = value;
  return Flow::failed;
}

}  // namespace

Flow Body::run(Machine& machine, Value* error) const {
  for (const StepPtr& step : steps) {
    if (machine.interrupted) return failed(error, machine.stopped(step->span));
    try {
      const Flow flow = step->run(machine, error);
      if (flow != Flow::next) return flow;
    } catch (const std::bad_alloc&) {
      return failed(error, machine.out_of_memory(step->span));
    }
  }
  return Flow::next;
}

Value StepNode::evaluate(Machine& machine) const {
  Value error = {};
  return body.run(machine, &error) == Flow::failed ? error : object_value(&kNoValue);
}

Flow ExpressionStep::run(Machine& machine, Value* error) const {
  const std::size_t since = machine.store.size();
  const Value value = expression->evaluate(machine);
  if (is_error(value)) return failed(error, value);
  machine.end_step(since, {});
  return Flow::next;
}

Flow AssignStep::run(Machine& machine, Value* error) const {
  const std::size_t since = machine.store.size();
  Value value = expression->evaluate(machine);
  if (!is_error(value)) value = assign_targets(machine, targets, value, expression->span);
  if (is_error(value)) return failed(error, value);
  machine.end_step(since, targets);
  return Flow::next;
}

// --- Assignment to parts ---

Flow UpdateStep::run(Machine& machine, Value* error) const {
  const std::size_t since = machine.store.size();
  const Value value = !variable->defined ? no_value_error(machine, place, variable->name, variable)
                      : indices == nullptr ? update(machine)
                                           : update_part(machine);
  if (is_error(value)) return failed(error, value);
  machine.end_step(since, {&variable, 1});
  return Flow::next;
}

// What is to be assigned where `old` stands.
Value UpdateStep::value(Machine& machine, const Value& old) const {
  const Value x = expression->evaluate(machine);
  if (is_error(x)) return x;
  if (is_none(x)) return machine.fail(expression->span, "the expression has no value");
  return has_operator ? binary(machine, op, old, x, op_span) : x;
}

Value UpdateStep::update(Machine& machine) const {
  const Value x = value(machine, machine.value_of(*variable));
  return is_error(x) ? x : assign_targets(machine, {&variable, 1}, x, expression->span);
}

Value UpdateStep::update_part(Machine& machine) const {
  const Value& held = machine.value_of(*variable);
  if (!is_matrix(held))
    return machine.fail(place, fmt::format("{} has no elements", kind_name(held)));
  Value error = {};
  const Block block = indices->block_of(machine, matrix(held), &error);
  if (is_error(error)) return error;
  const Value old =
      has_operator ? with_unit(part_of(machine, matrix(held), block), held.unit) : Value{};
  const Value x = value(machine, old);
  if (is_error(x)) return x;
  if (block.is_element() && is_plain_real(x) && held.unit == nullptr &&
      variable->written != nullptr && matrix(held)->im == nullptr) {
    const aMatrix* const m = matrix(held);
    m->re[block.cols.first * m->rows + block.rows.first] = x.re;
    return x;
  }
  return assign_block(machine, *variable, block, x, expression->span);
}

// --- Blocks ---

template <class At>
Flow ForStep::run_through(Machine& machine, std::ptrdiff_t count, At at, Value* error) const {
  for (std::ptrdiff_t k = 0; k < count; ++k) {
    if (machine.interrupted) return failed(error, machine.stopped(span));
    const Value value = at(k);
    const Value assigned = assign_targets(machine, {&variable, 1}, value, expression->span);
    if (is_error(assigned)) return failed(error, assigned);
    const Flow flow = body.run(machine, error);
    if (flow == Flow::failed) return flow;
    if (flow == Flow::leave) break;
  }
  return Flow::next;
}

Flow ForStep::run(Machine& machine, Value* error) const {
  if (stack_is_low()) return failed(error, machine.fail(span, kStackLimit.message));
  if (range != nullptr) {
    const Range r = range->range_of(machine, error);
    if (is_error(*error)) return Flow::failed;
    auto at = [&](std::ptrdiff_t k) { return with_unit(number_value(r.at(k)), r.unit); };
    return run_through(machine, r.count, at, error);
  }
  const Value value = expression->evaluate(machine);
  if (is_error(value)) return failed(error, value);
  const bool is_vector = is_matrix(value) && (matrix(value)->rows == 1 || matrix(value)->cols == 1);
  if (!is_vector && !is_number(value))
    return failed(error, machine.fail(expression->span,
                                      fmt::format("a loop runs through a range or a vector, not {}",
                                                  is_matrix(value)
                                                      ? "a " + shape_text(matrix(value)) + " matrix"
                                                      : kind_name(value))));
  const Machine::LoopValue held(machine, value);
  const std::ptrdiff_t count = is_number(value) ? 1 : element_count(matrix(value));
  auto at = [&](std::ptrdiff_t k) {
    return is_number(value) ? value : with_unit(element_of(matrix(value), k), value.unit);
  };
  return run_through(machine, count, at, error);
}

Flow WhileStep::run(Machine& machine, Value* error) const {
  if (stack_is_low()) return failed(error, machine.fail(span, kStackLimit.message));
  for (;;) {
    if (machine.interrupted) return failed(error, machine.stopped(span));
    const std::size_t since = machine.store.size();
    const bool goes_on = holds(machine, condition->evaluate(machine), condition->span, error);
    if (is_error(*error)) return Flow::failed;
    machine.end_step(since, {});
    if (!goes_on) return Flow::next;
    const Flow flow = body.run(machine, error);
    if (flow == Flow::failed) return flow;
    if (flow == Flow::leave) return Flow::next;
  }
}

Flow BranchStep::run(Machine& machine, Value* error) const {
  if (stack_is_low()) return failed(error, machine.fail(span, kStackLimit.message));
  for (const Branch& branch : branches) {
    const std::size_t since = machine.store.size();
    const bool taken =
        branch.condition == nullptr ||
        holds(machine, branch.condition->evaluate(machine), branch.condition->span, error);
    if (is_error(*error)) return Flow::failed;
    machine.end_step(since, {});
    if (taken) return branch.body.run(machine, error);
  }
  return Flow::next;
}

}  // namespace worksheet
