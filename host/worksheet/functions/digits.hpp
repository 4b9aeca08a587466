// digits(expression): how far its value can be trusted.
#pragma once

#include "host/worksheet/engine/call.hpp"

namespace worksheet {

class Machine;

// The least number of digits that hold of all that was checked since the machine's question began:
// CallNode begins one before it evaluates the argument.
Value digits_held(Machine& machine, const Call& call);

}  // namespace worksheet
