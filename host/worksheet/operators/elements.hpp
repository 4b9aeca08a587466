// Operators on numbers, and element by element on matrices.
#pragma once

#include "host/worksheet/operators/arithmetic.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

class Machine;

inline bool is_comparison(Operator op) {
  return op >= Operator::less && op <= Operator::not_equal;
}
inline bool is_logic(Operator op) {
  return op >= Operator::both;
}
inline double truth(bool holds) {
  return holds ? 1.0 : 0.0;
}

// What an operator on arrays is for two elements: '*' for ".*".
Operator for_elements(Operator op);

// a op b; not for left_divide. Complex numbers have equality alone of the comparisons.
Number element_result(Operator op, const Number& a, const Number& b);

// Whether two matrices have elements that belong together: equal shapes; for the operators with a
// point also a row or a column beside the other, which is then taken again and again.
bool elements_fit(Operator op, const aMatrix* a, const aMatrix* b);

// a op b for each element. Operands are numbers and matrices of numbers, at least one of these,
// that fit; their units do not count.
Value elementwise(Machine& machine, Operator op, const Value& a, const Value& b);

}  // namespace worksheet
