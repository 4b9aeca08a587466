// Powers of a matrix: its inverse and the unit matrix come from a pack.
#pragma once

#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

Value matrix_power(Machine& machine, const Value& base, const Number& exponent, Span span);

}  // namespace worksheet
