// Matrices to files: tables of numbers, and the Matrix Market exchange format.
#pragma once

#include "host/worksheet/engine/call.hpp"

namespace worksheet {

class Machine;

// The function of the language: write("FILE", A, B..., "heading: NAME"...). It sees to units
// itself.
Value write(Machine& machine, const Call& call);

}  // namespace worksheet
