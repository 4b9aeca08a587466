// Products of vectors, and numbers that belong to a square matrix.
#pragma once

#include "host/worksheet/engine/call.hpp"

namespace worksheet {

class Machine;

// The sum of conj(a[i]) b[i] over two vectors of equal length, rows or columns.
Value dot(Machine& machine, const Call& call);
// The vector product of two vectors of three elements; the shape is that of the first.
Value cross(Machine& machine, const Call& call);
// The sum of the diagonal.
Value trace(Machine& machine, const Call& call);
// The determinant, by elimination with partial pivoting (Golub and Van Loan, Matrix Computations,
// 4th ed., algorithm 3.4.1): the product of the pivots, its sign changed by each exchange of rows.
// 1 for a matrix without elements.
Value determinant(Machine& machine, const Call& call);

}  // namespace worksheet
