// Values in units that people read.
#pragma once

#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

// The value in the unit in which it is shown (unit_display.hpp); a matrix by its largest element.
// Variables keep theirs: what is calculated does not depend on how it was shown. Throws
// std::bad_alloc.
Value readable(Machine& machine, const Value& value);

}  // namespace worksheet
