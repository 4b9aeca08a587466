// Powers of a matrix: its inverse and the unit matrix come from a pack.
#pragma once

#include "host/worksheet/values/source.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

class Machine;

Value matrix_power(Machine& machine, const Value& base, const Number& exponent, Span span);

}  // namespace worksheet
