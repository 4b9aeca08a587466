// Functions of numbers, element by element where they are given a matrix.
#pragma once

#include "host/worksheet/engine/call.hpp"

namespace worksheet {

class Machine;

Value square_root(Machine& machine, const Call& call);
Value exponential(Machine& machine, const Call& call);
Value logarithm(Machine& machine, const Call& call);
Value sine(Machine& machine, const Call& call);
Value cosine(Machine& machine, const Call& call);
Value tangent(Machine& machine, const Call& call);
Value arc_tangent(Machine& machine, const Call& call);
Value magnitude(Machine& machine, const Call& call);
Value whole_below(Machine& machine, const Call& call);
Value real_part(Machine& machine, const Call& call);
Value imaginary_part(Machine& machine, const Call& call);
Value conjugate(Machine& machine, const Call& call);

// x modulo y: the remainder that has the divisor's sign.
Value modulo(Machine& machine, const Call& call);

}  // namespace worksheet
