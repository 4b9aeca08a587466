// Ranges a:b and a:step:b.
#pragma once

#include <span>

#include "host/worksheet/values/source.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

class Machine;

// The numbers from, from + step, from + 2 step... up to `to`.
struct Range {
  double from = 0.0;
  double step = 1.0;
  double to = 0.0;
  std::ptrdiff_t count = 0;
  const Unit* unit = nullptr;

  // Rounding does not carry the last one beyond `to`.
  double at(std::ptrdiff_t k) const;
};

// The range of the values of `bounds`: from and to, or from, step and to, in one unit. An error
// value, at the place of what is wrong, in *error.
Range range_of(Machine& machine, std::span<const Value> bounds, std::span<const Span> places,
               Value* error);

// The range as a column. Throws std::bad_alloc.
Value column_of(Machine& machine, const Range& range);

}  // namespace worksheet
