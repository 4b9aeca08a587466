#include "host/worksheet/functions/reductions.hpp"

#include <algorithm>
#include <cmath>

#include "fmt/format.h"
#include "host/units/unit.hpp"
#include "host/worksheet/functions/elementary.hpp"
#include "host/worksheet/functions/elementwise.hpp"

namespace worksheet {

namespace {

// The way through the elements of a matrix: so many lines of so many elements, `between` their
// beginnings and `step` between neighbours.
struct Lines {
  std::ptrdiff_t count, length, between, step;
};

enum class Direction { whole, down, along };

Lines lines_of(const Elements& x, Direction direction) {
  switch (direction) {
    case Direction::down:
      return {x.cols, x.rows, x.rows, 1};
    case Direction::along:
      return {x.rows, x.cols, 1, x.rows};
    default:
      return {1, x.count(), 0, 1};
  }
}

// Checks the array, and takes the direction from the second argument if there is one; gives an
// error value, or a number when all is well.
Value take_arguments(Machine& machine, const Call& call, bool real_only, Direction* direction) {
  if (const char* reason = objection(call.arguments[0], real_only))
    return machine.fail(call.places[0], reason);
  *direction = Direction::whole;
  if (call.arguments.size() == 1) return number_value(0.0);
  const Value v = as_number(call.arguments[1]);
  if (!is_plain_real(v) || (v.re != 1.0 && v.re != 2.0))
    return machine.fail(call.places[1], "a direction is 1, down the columns, or 2, along the rows");
  *direction = v.re == 1.0 ? Direction::down : Direction::along;
  return number_value(0.0);
}

// fold(x, first element, step, length) of each line.
template <class Fold>
Value reduced(Machine& machine, const Call& call, Fold fold) {
  Direction direction;
  const Value error = take_arguments(machine, call, false, &direction);
  if (is_error(error)) return error;
  const Elements x(call.arguments[0]);
  const Lines lines = lines_of(x, direction);
  if (direction == Direction::whole) return number_value(fold(x, 0, lines.step, lines.length));
  const bool down = direction == Direction::down;
  MatrixBuilder result(down ? 1 : x.rows, down ? x.cols : 1);
  for (std::ptrdiff_t k = 0; k < lines.count; ++k)
    result.set(k, fold(x, k * lines.between, lines.step, lines.length));
  return object_value(result.finish(machine.store));
}

Number sum_of(const Elements& x, std::ptrdiff_t at, std::ptrdiff_t step, std::ptrdiff_t length) {
  Number total = 0.0;
  for (; length > 0; --length, at += step) total += x.at(at);
  return total;
}

Number product_of(const Elements& x, std::ptrdiff_t at, std::ptrdiff_t step,
                  std::ptrdiff_t length) {
  Number total = 1.0;
  for (; length > 0; --length, at += step) {
    const Number z = x.at(at);
    total = z.imag() == 0.0 && total.imag() == 0.0 ? total.real() * z.real() : total * z;
  }
  return total;
}

// 1 if an element is found that is `wanted`, not 0 or 0.
template <bool wanted>
bool holds(const Elements& x, std::ptrdiff_t at, std::ptrdiff_t step, std::ptrdiff_t length) {
  for (; length > 0; --length, at += step)
    if ((x.at(at) != 0.0) == wanted) return true;
  return false;
}

}  // namespace

Value sum(Machine& machine, const Call& call) {
  return reduced(machine, call, sum_of);
}

Value product_of_elements(Machine& machine, const Call& call) {
  const Value plain[] = {without_unit(call.arguments[0]),
                         call.arguments.size() > 1 ? call.arguments[1] : number_value(0.0)};
  std::ptrdiff_t factors = 1;
  const Value result = reduced(
      machine, {{plain, call.arguments.size()}, call.span, call.places},
      [&](const Elements& x, std::ptrdiff_t at, std::ptrdiff_t step, std::ptrdiff_t length) {
        factors = length;
        return product_of(x, at, step, length);
      });
  const Unit* const unit = call.arguments[0].unit;
  if (is_error(result) || unit == nullptr || factors == 0) return result;
  const UnitProduct power = raise(unit, factors);
  return with_unit(scaled(machine, result, power.factor), power.unit);
}

Value mean(Machine& machine, const Call& call) {
  const Value& x = call.arguments[0];
  if (is_matrix(x) && element_count(matrix(x)) == 0)
    return machine.fail(call.places[0], "must have elements");
  return reduced(
      machine, call,
      [](const Elements& x, std::ptrdiff_t at, std::ptrdiff_t step, std::ptrdiff_t length) {
        return sum_of(x, at, step, length) / static_cast<double>(length);
      });
}

Value any(Machine& machine, const Call& call) {
  return reduced(machine, call, holds<true>);
}

Value all(Machine& machine, const Call& call) {
  return reduced(machine, call, [](const auto&... line) { return !holds<false>(line...); });
}

// --- Matrices of the same shape ---

namespace {

// change(result, first element, step, length) on each line of a copy of the array.
template <class Change>
Value rearranged(Machine& machine, const Call& call, bool real_only, Change change) {
  Direction direction;
  const Value error = take_arguments(machine, call, real_only, &direction);
  if (is_error(error)) return error;
  const Value& v = call.arguments[0];
  if (is_number(v)) return v;
  const Elements x(v);
  if (direction == Direction::whole && x.rows != 1 && x.cols != 1)
    return machine.fail(
        call.span, fmt::format("a {} matrix needs a direction as well: 1, down the columns, or 2, "
                               "along the rows",
                               shape_text(matrix(v))));
  MatrixBuilder result(x.rows, x.cols);
  for (std::ptrdiff_t k = 0; k < x.count(); ++k) result.set(k, x.at(k));
  const Lines lines = lines_of(x, direction);
  for (std::ptrdiff_t k = 0; k < lines.count; ++k) {
    if (machine.interrupted) return machine.stopped(call.span);
    change(result, k * lines.between, lines.step, lines.length);
  }
  return object_value(result.finish(machine.store));
}

// NaN behind all numbers.
bool stands_before(double a, double b) {
  return a < b || (std::isnan(b) && !std::isnan(a));
}

}  // namespace

Value cumulative_sum(Machine& machine, const Call& call) {
  return rearranged(
      machine, call, false,
      [](MatrixBuilder& x, std::ptrdiff_t at, std::ptrdiff_t step, std::ptrdiff_t length) {
        for (; length > 1; --length, at += step) x.set(at + step, x.get(at) + x.get(at + step));
      });
}

Value sort(Machine& machine, const Call& call) {
  std::vector<double> line;
  return rearranged(
      machine, call, true,
      [&](MatrixBuilder& x, std::ptrdiff_t at, std::ptrdiff_t step, std::ptrdiff_t length) {
        line.clear();
        for (std::ptrdiff_t k = 0; k < length; ++k) line.push_back(x.re()[at + k * step]);
        std::stable_sort(line.begin(), line.end(), stands_before);
        for (const double element : line) {
          x.re()[at] = element;
          at += step;
        }
      });
}

// --- Counting and finding ---

Value number_of_elements(Machine& machine, const Call& call) {
  const Value& v = call.arguments[0];
  if (is_number(v)) return number_value(1.0);
  if (!is_matrix(v)) return machine.fail(call.places[0], "must be a number or a matrix");
  return number_value(static_cast<double>(element_count(matrix(v))));
}

Value find(Machine& machine, const Call& call) {
  if (const char* reason = objection(call.arguments[0], false))
    return machine.fail(call.places[0], reason);
  const Variable* const origin = machine.find_variable(ORIGIN_sUnIdent->name->text);
  const double start = origin == nullptr ? 0.0 : origin->value.re;
  const Elements x(call.arguments[0]);
  std::vector<std::ptrdiff_t> found;
  for (std::ptrdiff_t k = 0; k < x.count(); ++k)
    if (x.at(k) != 0.0) found.push_back(k);
  const bool is_vector = x.rows == 1 || x.cols == 1;
  const auto count = static_cast<std::ptrdiff_t>(found.size());
  MatrixBuilder result(count, is_vector ? 1 : 2);
  for (std::ptrdiff_t k = 0; k < count; ++k) {
    const std::ptrdiff_t at = found[static_cast<std::size_t>(k)];
    result.re()[k] = start + static_cast<double>(is_vector ? at : at % x.rows);
    if (!is_vector) result.re()[count + k] = start + static_cast<double>(at / x.rows);
  }
  return object_value(result.finish(machine.store));
}

// --- The largest and the smallest ---

namespace {

Value extreme(Machine& machine, const Call& call, const char* name, double (*f)(double, double)) {
  if (call.arguments.size() == 1) {
    const Row* const row = machine.find_row(name);
    return row != nullptr ? machine.call(*row, call)
                          : machine.fail(call.span, fmt::format("no pack gives {}(A)", name));
  }
  for (std::size_t k = 0; k < call.arguments.size(); ++k)
    if (const char* reason = objection(call.arguments[k], true))
      return machine.fail(call.places[k], reason);
  Value result = call.arguments[0];
  for (std::size_t k = 1; k < call.arguments.size() && !is_error(result); ++k)
    result = each_pair(machine, f, result, call.arguments[k], call);
  return result;
}

}  // namespace

Value maximum(Machine& machine, const Call& call) {
  return extreme(machine, call, "max", larger);
}

Value minimum(Machine& machine, const Call& call) {
  return extreme(machine, call, "min", smaller);
}

}  // namespace worksheet
