#include "host/worksheet/engine/readable.hpp"

#include <algorithm>
#include <cmath>

#include "host/units/unit_display.hpp"
#include "host/worksheet/engine/matrices.hpp"

namespace worksheet {

double largest_magnitude(const Value& value) {
  if (is_number(value)) return std::abs(number(value));
  const aMatrix* const m = matrix(value);
  double most = 0.0;
  for (std::ptrdiff_t k = 0; k < element_count(m); ++k) {
    const double size =
        m->im == nullptr ? std::fabs(re_at(m, k)) : std::abs(Number(re_at(m, k), im_at(m, k)));
    if (std::isfinite(size)) most = std::max(most, size);
  }
  return most;
}

Value readable(Machine& machine, const Value& value) {
  if (value.unit == nullptr || value.unit->origin() != Unit::Origin::calculated) return value;
  // A copy would lose the parts of a joined value.
  if (!machine.store.parts(value.object).empty()) return value;
  const UnitProduct shown = readable_unit(value.unit, largest_magnitude(value));
  return with_unit(scaled(machine, value, shown.factor), shown.unit);
}

}  // namespace worksheet
