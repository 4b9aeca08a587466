// Functions that add or take away the part arrays of a matrix: packs treat an absent array and one
// of zeros differently.
#pragma once

#include "host/worksheet/engine/call.hpp"

namespace worksheet {

class Machine;

// Without the imaginary array.
Value real_only(Machine& machine, const Call& call);
// With an imaginary array, be it of zeros.
Value with_imag(Machine& machine, const Call& call);
// Without part arrays that hold only zeros.
Value lean(Machine& machine, const Call& call);

}  // namespace worksheet
