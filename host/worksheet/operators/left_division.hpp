// A \ b: the solution x of A x = b.
#pragma once

#include "host/worksheet/values/source.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

class Machine;

// By the pack's lsolve where A is square, and column by column where b is a matrix; the least
// squares solution geninv(A) * b where A has more rows than columns; b / A where A is a number. The
// unit is that of b divided by that of A.
Value left_division(Machine& machine, const Value& a, const Value& b, Span span);

}  // namespace worksheet
