// Functions that make matrices.
#pragma once

#include "host/worksheet/engine/call.hpp"

namespace worksheet {

class Machine;

// m x n matrices, of at most kBuiltLimit elements.
Value zeros(Machine& machine, const Call& call);
Value ones(Machine& machine, const Call& call);

// A column of n numbers from a to b, both included, at equal distances; of b alone for n = 1.
Value linspace(Machine& machine, const Call& call);

// One matrix of the matrices and numbers that a nested array holds, each at its place. Those of one
// row have as many rows, those of one column as many columns.
Value blocks(Machine& machine, const Call& call);

}  // namespace worksheet
