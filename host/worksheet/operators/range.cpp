#include "host/worksheet/operators/range.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "fmt/format.h"
#include "host/units/unit.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/matrices.hpp"

namespace worksheet {

double Range::at(std::ptrdiff_t k) const {
  const double x = from + static_cast<double>(k) * step;
  return step > 0.0 ? std::min(x, to) : std::max(x, to);
}

namespace {

// How many steps there are, a few roundings of the bounds allowed for: 0:0.1:6 has 61 elements.
double count_of(double from, double step, double to) {
  constexpr double kRoundings = 4.0 * std::numeric_limits<double>::epsilon();
  const double steps = (to - from) / step;
  return std::floor(steps + std::max(1.0, std::fabs(steps)) * kRoundings) + 1.0;
}

}  // namespace

Range range_of(Machine& machine, std::span<const Value> bounds, std::span<const Span> places,
               Value* error) {
  const auto given = std::find_if(bounds.begin(), bounds.end(),
                                  [](const Value& v) { return !needs_no_unit(as_number(v)); });
  Range range;
  range.unit = given == bounds.end() ? nullptr : given->unit;
  std::array<double, 3> x = {0.0, 1.0, 0.0};
  for (std::size_t k = 0; k < bounds.size(); ++k) {
    const Value v = as_number(bounds[k]);
    if (!is_number(v) || v.im != 0.0 || !std::isfinite(v.re)) {
      *error = machine.fail(places[k], "a range is made of finite real numbers");
      return range;
    }
    const auto factor = needs_no_unit(v) ? 1.0 : common_conversion(v.unit, range.unit);
    if (!factor) {
      *error = machine.fail(
          places[k], fmt::format("a range has one unit, not {} and {}{}", unit_text(range.unit),
                                 unit_text(v.unit), conversion_hint(v.unit, range.unit)));
      return range;
    }
    x[k == 1 && bounds.size() == 2 ? 2 : k] = v.re * *factor;
  }
  if (bounds.size() == 2 && range.unit != nullptr)
    *error = machine.fail({places[0].begin, places[1].end},
                          fmt::format("a range in {} needs a step, as in 0{{m}}:0.1{{m}}:6{{m}}",
                                      unit_text(range.unit)));
  else if (x[1] == 0.0)
    *error = machine.fail(places[1], "the step of a range is not 0");
  if (error->object != nullptr) return range;
  range.from = x[0];
  range.step = x[1];
  range.to = x[2];
  const double count = count_of(x[0], x[1], x[2]);
  if (count > static_cast<double>(kRangeLimit.most))
    *error = machine.fail({places.front().begin, places.back().end}, kRangeLimit.message);
  else if (count > 0.0)
    range.count = static_cast<std::ptrdiff_t>(count);
  return range;
}

Value column_of(Machine& machine, const Range& range) {
  MatrixBuilder result(range.count, 1);
  for (std::ptrdiff_t k = 0; k < range.count; ++k) result.re()[k] = range.at(k);
  return object_value(result.finish(machine.store), range.unit);
}

}  // namespace worksheet
