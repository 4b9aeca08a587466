// The operators of the language on values.
#pragma once

#include "host/worksheet/engine/source.hpp"
#include "host/worksheet/engine/value.hpp"

namespace worksheet {

class Machine;

enum class Operator {
  add,
  subtract,
  multiply,
  divide,
  power,
  less,
  less_equal,
  greater,
  greater_equal,
  equal,
  not_equal
};

const char* operator_text(Operator op);

// `span` is where an error is shown.
Value binary(Machine& machine, Operator op, const Value& a, const Value& b, Span span);
Value negate(Machine& machine, const Value& a, Span span);

// a^b, real where that makes sense.
Number power(const Number& a, const Number& b);

}  // namespace worksheet
