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

// Null, or why `v` is no number and no matrix of numbers; real ones, if that is asked.
const char* objection(const Value& v, bool real_only);

// The numbers of such a value in the order of storage. `v` must outlive it.
struct Elements {
  explicit Elements(const Value& v);
  std::ptrdiff_t count() const { return rows * cols; }
  Number at(std::ptrdiff_t k) const {
    return {re == nullptr ? 0.0 : re[k], im == nullptr ? 0.0 : im[k]};
  }

  const double *re, *im;  // Null where all are zeros.
  std::ptrdiff_t rows, cols;
};

// f of each element of the first argument: a number for a number, a matrix for a matrix. `f` takes
// a Number and gives one. The argument has no unit (see UnitUse); the error of one that is neither
// number nor matrix of numbers, or complex where `real_only`, is at its place.
template <class F>
Value map(Machine& machine, const Call& call, F f, bool real_only = false) {
  const Value& v = call.arguments[0];
  if (const char* reason = objection(v, real_only)) return machine.fail(call.places[0], reason);
  if (is_number(v)) return number_value(f(number(v)));
  const Elements x(v);
  MatrixBuilder result(x.rows, x.cols);
  for (std::ptrdiff_t k = 0; k < x.count(); ++k) result.set(k, f(x.at(k)));
  return object_value(result.finish(machine.store));
}

// The same as a function of the table, and that for real numbers only.
template <Number (*f)(const Number&)>
Value each(Machine& machine, const Call& call) {
  return map(machine, call, f);
}
template <double (*f)(double)>
Value each_real(Machine& machine, const Call& call) {
  return map(
      machine, call, [](const Number& z) { return Number(f(z.real())); }, true);
}

// Of two real arguments: both of one shape, or a number with every element of the other one. A
// 1 x 1 matrix counts as its number where another shape does not fit.
Value each_pair(Machine& machine, double (*f)(double, double), const Value& a, const Value& b,
                const Call& call);

template <double (*f)(double, double)>
Value each_pair(Machine& machine, const Call& call) {
  for (std::size_t k = 0; k < 2; ++k)
    if (const char* reason = objection(call.arguments[k], true))
      return machine.fail(call.places[k], reason);
  return each_pair(machine, f, call.arguments[0], call.arguments[1], call);
}

}  // namespace worksheet
