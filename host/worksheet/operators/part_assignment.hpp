// Assignment to elements and blocks of a variable's matrix.
#pragma once

#include "host/worksheet/operators/subscript.hpp"
#include "host/worksheet/values/variable.hpp"

namespace worksheet {

// Writes x to the block of the variable's matrix, in place if no one else holds it: a number to
// every element, a matrix of the block's shape (or a vector as long as the block, if that is one
// row or column) element by element. x is brought to the unit of the matrix; one of zeros adopts
// that of x. Gives x, or an error value at `span`. Throws std::bad_alloc; then nothing is written.
Value assign_block(Machine& machine, Variable& variable, const Block& block, const Value& x,
                   Span span);

}  // namespace worksheet
