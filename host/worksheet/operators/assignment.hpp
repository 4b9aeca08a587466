// Giving names values.
#pragma once

#include <span>

#include "host/worksheet/values/source.hpp"
#include "host/worksheet/values/variable.hpp"

namespace worksheet {

class Machine;

// Null, or why the variable cannot have the value: packs read the index origin as a number without
// looking at its kind.
const char* assignment_objection(const Variable& variable, const Value& value);

// The value for one name; for several its parts, as many as there are names. Gives the value, or an
// error value at `span`.
Value split_value(Machine& machine, const Value& value, std::span<Value> parts, Span span);

// Gives the targets the value, or each a part of it; gives the value, or an error value at `span`.
Value assign_targets(Machine& machine, std::span<Variable* const> targets, const Value& value,
                     Span span);

}  // namespace worksheet
