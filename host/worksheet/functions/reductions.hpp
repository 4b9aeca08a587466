// Functions that go through the elements of a matrix. sum, prod, mean, any and all take a matrix as
// a whole, or with a direction as second argument: 1 down each column, 2 along each row. cumsum and
// sort take vectors, and matrices with a direction. Sums and products are formed in the order of
// the elements.
#pragma once

#include "host/worksheet/engine/call.hpp"

namespace worksheet {

class Machine;

Value sum(Machine& machine, const Call& call);
Value product_of_elements(Machine& machine, const Call& call);
Value mean(Machine& machine, const Call& call);
// 1 where some element, or every one, is not 0; else 0.
Value any(Machine& machine, const Call& call);
Value all(Machine& machine, const Call& call);

Value cumulative_sum(Machine& machine, const Call& call);
// Ascending, NaN last; for real elements.
Value sort(Machine& machine, const Call& call);

Value number_of_elements(Machine& machine, const Call& call);
// The indices, counted from ORIGIN, of the elements that are not 0: a column; of a matrix with
// several rows and columns, two columns.
Value find(Machine& machine, const Call& call);

// Of several arguments element by element; of one, what the pack's function of that name gives.
Value maximum(Machine& machine, const Call& call);
Value minimum(Machine& machine, const Call& call);

}  // namespace worksheet
