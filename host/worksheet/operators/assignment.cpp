#include "host/worksheet/operators/assignment.hpp"

#include <array>

#include "fmt/format.h"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

const char* assignment_objection(const Variable& variable, const Value& value) {
  return variable.is_origin && !is_plain_real(value) ? "ORIGIN must be a plain real number"
                                                     : nullptr;
}

Value split_value(Machine& machine, const Value& value, std::span<Value> parts, Span span) {
  if (parts.size() == 1) return parts[0] = value;
  const auto made_of = machine.store.parts(value.object);
  if (made_of.size() != parts.size())
    return machine.fail(span, made_of.empty() ? "the value is not made of parts"
                                              : fmt::format("the value has {} parts, not {}",
                                                            made_of.size(), parts.size()));
  for (std::size_t k = 0; k < parts.size(); ++k) parts[k] = object_value(made_of[k], value.unit);
  return value;
}

namespace {

Value assign_parts(Machine& machine, std::span<Variable* const> targets, const Value& value,
                   Span span) {
  std::array<Value, kTargetLimit.most> parts;
  const Value split = split_value(machine, value, {parts.data(), targets.size()}, span);
  if (is_error(split)) return split;
  for (std::size_t k = 0; k < targets.size(); ++k)
    if (const char* reason = assignment_objection(*targets[k], parts[k]))
      return machine.fail(span, reason);
  for (std::size_t k = 0; k < targets.size(); ++k)
    machine.assign_part_of_joined(*targets[k], parts[k]);
  return value;
}

}  // namespace

Value assign_targets(Machine& machine, std::span<Variable* const> targets, const Value& value,
                     Span span) {
  if (targets.size() != 1) return assign_parts(machine, targets, value, span);
  if (const char* reason = assignment_objection(*targets[0], value))
    return machine.fail(span, reason);
  machine.assign(*targets[0], value);
  return value;
}

}  // namespace worksheet
