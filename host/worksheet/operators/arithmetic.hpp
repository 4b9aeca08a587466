// The operators of the language on values.
#pragma once

#include "host/worksheet/values/source.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

class Machine;

enum class Operator {
  add,
  subtract,
  multiply,
  divide,
  power,
  left_divide,
  each_multiply,
  each_divide,
  each_power,
  less,
  less_equal,
  greater,
  greater_equal,
  equal,
  not_equal,
  both,
  either
};

const char* operator_text(Operator op);

// `span` is where an error is shown.
Value binary(Machine& machine, Operator op, const Value& a, const Value& b, Span span);
Value negate(Machine& machine, const Value& a, Span span);
// 1 for 0 and 0 for any other number, element by element.
Value opposite(Machine& machine, const Value& a, Span span);

// Whether a condition holds; an error value in *error where it is no plain real number.
bool holds(Machine& machine, const Value& condition, Span span, Value* error);

// a^b, real where that makes sense.
Number power(const Number& a, const Number& b);

}  // namespace worksheet
