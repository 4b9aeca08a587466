// How a function of numbers works on an array: element by element. Every such function of the
// language goes through here.
#pragma once

#include "host/worksheet/engine/call.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/matrices.hpp"

namespace worksheet {

inline bool is_real(const Number& z) {
  return z.imag() == 0.0;
}

// Null, or why `v` is no argument for a function of numbers.
const char* objection(const Value& v, bool real_only);

// f of each element of the only argument: a number for a number, a matrix for a matrix. `f` takes
// a Number and gives one. The argument has no unit (see UnitUse); the error of one that is neither
// number nor matrix of numbers, or complex where `real_only`, is at its place.
template <class F>
Value map(Machine& machine, const Call& call, F f, bool real_only = false) {
  const Value& v = call.arguments[0];
  if (const char* reason = objection(v, real_only)) return machine.fail(call.places[0], reason);
  if (is_number(v)) return number_value(f(number(v)));
  const aMatrix* const m = matrix(v);
  MatrixBuilder result(m->rows, m->cols);
  for (std::ptrdiff_t k = 0; k < element_count(m); ++k)
    result.set(k, f(Number(re_at(m, k), im_at(m, k))));
  return object_value(result.finish(machine.store));
}

}  // namespace worksheet
