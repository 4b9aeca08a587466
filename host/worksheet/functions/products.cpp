#include "host/worksheet/functions/products.hpp"

#include <algorithm>
#include <cmath>

#include "fmt/format.h"
#include "host/units/unit.hpp"
#include "host/worksheet/functions/elementwise.hpp"

namespace worksheet {

namespace {

// Null, or why argument k is no vector of numbers.
const char* vector_objection(const Value& v) {
  if (const char* reason = objection(v, false)) return reason;
  const Elements x(v);
  return is_number(v) || (x.rows != 1 && x.cols != 1) ? "must be vector" : nullptr;
}

// Null, or why it is no square matrix of numbers; a number counts as one of 1 x 1.
const char* square_objection(const Value& v) {
  if (const char* reason = objection(v, false)) return reason;
  const Elements x(v);
  return x.rows != x.cols ? "must be square" : nullptr;
}

// What is wrong with two vectors, as an error value; a number when nothing is.
Value check_vectors(Machine& machine, const Call& call) {
  for (std::size_t k = 0; k < 2; ++k)
    if (const char* reason = vector_objection(call.arguments[k]))
      return machine.fail(call.places[k], reason);
  const std::ptrdiff_t m = Elements(call.arguments[0]).count();
  const std::ptrdiff_t n = Elements(call.arguments[1]).count();
  if (m == n) return number_value(0.0);
  return machine.fail(call.span, fmt::format("needs vectors of equal length, not {} and {}", m, n));
}

}  // namespace

Value dot(Machine& machine, const Call& call) {
  const Value error = check_vectors(machine, call);
  if (is_error(error)) return error;
  const Elements a(call.arguments[0]), b(call.arguments[1]);
  Number total = 0.0;
  for (std::ptrdiff_t k = 0; k < a.count(); ++k) {
    const Number x = a.at(k), y = b.at(k);
    total += x.imag() == 0.0 && y.imag() == 0.0 ? x.real() * y.real() : std::conj(x) * y;
  }
  return number_value(total);
}

Value cross(Machine& machine, const Call& call) {
  const Value error = check_vectors(machine, call);
  if (is_error(error)) return error;
  const Elements a(call.arguments[0]), b(call.arguments[1]);
  if (a.count() != 3) return machine.fail(call.places[0], "must have three elements");
  MatrixBuilder result(a.rows, a.cols);
  for (std::ptrdiff_t k = 0; k < 3; ++k) {
    const std::ptrdiff_t i = (k + 1) % 3, j = (k + 2) % 3;
    result.set(k, a.at(i) * b.at(j) - a.at(j) * b.at(i));
  }
  return object_value(result.finish(machine.store));
}

Value trace(Machine& machine, const Call& call) {
  if (const char* reason = square_objection(call.arguments[0]))
    return machine.fail(call.places[0], reason);
  const Elements x(call.arguments[0]);
  Number total = 0.0;
  for (std::ptrdiff_t k = 0; k < x.rows; ++k) total += x.at(k * x.rows + k);
  return number_value(total);
}

// --- The determinant ---

namespace {

// The largest element of column k from the diagonal on; a NaN counts as larger than all.
template <class T>
std::ptrdiff_t pivot_row(const std::vector<T>& a, std::ptrdiff_t n, std::ptrdiff_t k) {
  const T* const column = a.data() + k * n;
  std::ptrdiff_t best = k;
  for (std::ptrdiff_t i = k + 1; i < n; ++i)
    if (!(std::abs(column[i]) <= std::abs(column[best])) && !std::isnan(std::abs(column[best])))
      best = i;
  return best;
}

// Takes multiples of row k off those below it, so that nothing stays below the pivot.
template <class T>
void eliminate(std::vector<T>& a, std::ptrdiff_t n, std::ptrdiff_t k) {
  T* const pivots = a.data() + k * n;
  for (std::ptrdiff_t i = k + 1; i < n; ++i) pivots[i] /= pivots[k];
  for (std::ptrdiff_t j = k + 1; j < n; ++j) {
    T* const column = a.data() + j * n;
    const T factor = column[k];
    if (factor == T(0.0)) continue;
    for (std::ptrdiff_t i = k + 1; i < n; ++i) column[i] -= pivots[i] * factor;
  }
}

// Overwrites a, n x n by columns. Ends early when it is interrupted.
template <class T>
T determinant_of(const Machine& machine, std::vector<T> a, std::ptrdiff_t n) {
  T product = 1.0;
  for (std::ptrdiff_t k = 0; k < n && !machine.interrupted; ++k) {
    const std::ptrdiff_t pivot = pivot_row(a, n, k);
    if (pivot != k) {
      for (std::ptrdiff_t j = k; j < n; ++j) std::swap(a[j * n + k], a[j * n + pivot]);
      product = -product;
    }
    product *= a[k * n + k];
    if (a[k * n + k] == T(0.0)) return 0.0;
    eliminate(a, n, k);
  }
  return product;
}

}  // namespace

Value determinant(Machine& machine, const Call& call) {
  const Value& v = call.arguments[0];
  if (const char* reason = square_objection(v)) return machine.fail(call.places[0], reason);
  const Elements x(v);
  const auto count = static_cast<std::size_t>(x.count());
  Number result;
  if (x.im == nullptr) {
    std::vector<double> a(count);
    for (std::size_t k = 0; k < count; ++k) a[k] = x.at(static_cast<std::ptrdiff_t>(k)).real();
    result = determinant_of(machine, std::move(a), x.rows);
  } else {
    std::vector<Number> a(count);
    for (std::size_t k = 0; k < count; ++k) a[k] = x.at(static_cast<std::ptrdiff_t>(k));
    result = determinant_of(machine, std::move(a), x.rows);
  }
  if (machine.interrupted) return machine.stopped(call.span);
  if (v.unit == nullptr || x.rows == 0) return number_value(result);
  const UnitProduct unit = raise(v.unit, x.rows);
  return with_unit(number_value(result * unit.factor), unit.unit);
}

}  // namespace worksheet
