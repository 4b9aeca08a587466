// Units in which results read well.
#pragma once

#include "host/units/unit.hpp"

namespace worksheet {

// The unit in which to show numbers in `unit` of which the largest is `magnitude`, and what to
// multiply them by:
//
// - One that someone wrote down, and one with other units than metric ones in it, stays.
// - What is of the dimension of N, Pa, J, W, V, A, Ohm, S, C, F, H, Wb, T, lm, lx, m, g or s is
// shown in
//   it, with the prefix that puts the magnitude between 1 and 1000. A force times a length stays
//   one: a torque is no energy.
// - Products of other units that come down to a force and a power of a length are shown in N or kN
//   and m.
// - Everything else stays.
UnitProduct readable_unit(const Unit* unit, double magnitude);

// The same for numbers whose format asks for prefixes, whoever wrote the unit: the first factor of
// the unit, if it takes prefixes and has the power 1, gets the one that puts the magnitude between
// 1 and 1000. A unit that was asked for stays.
UnitProduct prefixed_unit(const Unit* unit, double magnitude);

}  // namespace worksheet
