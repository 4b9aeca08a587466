// Values in units that people read.
#pragma once

#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

// The largest magnitude of an element of a number or matrix; those that are not finite do not
// count.
double largest_magnitude(const Value& value);

// The value in the unit in which it is shown (unit_display.hpp); a matrix by its largest element.
// Variables keep theirs: what is calculated does not depend on how it was shown. Throws
// std::bad_alloc.
Value readable(Machine& machine, const Value& value);

}  // namespace worksheet
