// Products of units: what stays in them, and single units that they stand for.
#include <cmath>
#include <map>
#include <tuple>

#include "host/units/unit_factors.hpp"
#include "host/units/unit_names.hpp"

namespace worksheet {

namespace {

// Single units that a product of several may stand for: coherent ones of the SI, and what customary
// units make. Not the joule: a torque is no energy.
constexpr const char* kSingle[] = {"N",   "Pa", "W",   "V",   "A",   "Ohm", "C",
                                   "F",   "H",  "lm",  "lbf", "kip", "psi", "ksi",
                                   "psf", "mi", "nmi", "ft",  "gal", "lb"};

// Multiplies by a factor. One of the same dimension takes it in; gives what the numbers are to be
// multiplied by.
double take_in(Factors& factors, const Unit::Factor& factor) {
  for (Unit::Factor& present : factors) {
    if (present.unit->dimension != factor.unit->dimension) continue;
    present.power = present.power + factor.power;
    return power_of(factor.unit->scale / present.unit->scale, factor.power);
  }
  factors.push_back(factor);
  return 1.0;
}

Factors base_factors(const Dimension& dimension) {
  Factors factors;
  for (const bool above : {true, false})
    for (const auto& [base, power] : dimension)
      if ((power.num > 0) == above) factors.push_back({find_named_unit(base), power});
  return factors;
}

// A product of two or more factors as a single unit of the same scale, or in base units if these
// are fewer.
UnitProduct readable(const Factors& factors) {
  const Dimension dimension = dimension_of(factors);
  const double scale = scale_of(factors);
  if (dimension.empty()) return {nullptr, scale};
  if (factors.size() < 2) return {unit_of(factors), 1.0};
  constexpr double kNear = 1e-14;
  for (const char* name : kSingle) {
    const NamedUnit* const single = find_named_unit(name);
    if (std::fabs(single->scale - scale) <= kNear * scale && single->dimension == dimension)
      return {unit_of({{single, 1}}), scale / single->scale};
  }
  if (dimension.size() < factors.size()) return {unit_of(base_factors(dimension)), scale};
  return {unit_of(factors), 1.0};
}

// Takes angles out of a product in which they do not count; gives what the numbers are to be
// multiplied by.
double drop_angles(Factors& factors) {
  double scale = 1.0;
  Factors kept;
  for (const Unit::Factor& factor : factors) {
    if (angle_in(factor.unit->dimension) == Rational(0)) {
      scale *= take_in(kept, factor);
      continue;
    }
    scale *= power_of(factor.unit->scale, factor.power);
    for (const Unit::Factor& base : base_factors(without_angle(factor.unit->dimension)))
      scale *= take_in(kept, {base.unit, base.power * factor.power});
  }
  factors = std::move(kept);
  return scale;
}

// The factors of a unit without the angles that do not count in it.
Factors counted_factors(const Unit& unit, double* scale, const Rational& power) {
  Factors factors = unit.factors();
  if (!counts_angles(unit.dimension())) *scale *= power_of(drop_angles(factors), power);
  return factors;
}

UnitProduct new_product(const Unit* a, const Unit* b, const Rational& power) {
  Factors factors;
  double scale = 1.0;
  auto add = [&](const Unit* unit, const Rational& p) {
    if (unit == nullptr) return;
    for (const Unit::Factor& factor : counted_factors(*unit, &scale, p)) {
      const Unit::Factor raised = {factor.unit, factor.power * p};
      scale *= factor.unit->dimension.empty() ? power_of(factor.unit->scale, raised.power)
                                              : take_in(factors, raised);
    }
  };
  add(a, 1);
  add(b, power);
  if (!counts_angles(dimension_of(factors))) {
    const Rational angle = angle_in(dimension_of(factors));
    scale *= drop_angles(factors);
    // Power over a rotational speed is a torque.
    const NamedUnit *const force = find_named_unit("N"), *const length = find_named_unit("m");
    const Factors torque = {{force, 1}, {length, 1}};
    if (angle == Rational(-1) && dimension_of(factors) == dimension_of(torque)) {
      scale *= scale_of(factors);
      factors = torque;
    }
  }
  std::erase_if(factors, [](const Unit::Factor& f) { return f.power == Rational(0); });
  const UnitProduct result = readable(factors);
  return {result.unit, result.factor * scale};
}

// a b^power. The same few units meet again and again.
UnitProduct product(const Unit* a, const Unit* b, const Rational& power) {
  static std::map<std::tuple<const Unit*, const Unit*, Rational>, UnitProduct> made;
  const auto key = std::make_tuple(a, b, power);
  if (const auto found = made.find(key); found != made.end()) return found->second;
  return made[key] = new_product(a, b, power);
}

// The unit of a multiple of a value.
const Unit* unit_of_multiple(const Unit* unit) {
  if (unit == nullptr || unit->origin() != Unit::Origin::written) return unit;
  return unit_of(unit->factors());
}

}  // namespace

UnitProduct multiply(const Unit* a, const Unit* b) {
  if (a == nullptr || b == nullptr) return {unit_of_multiple(a == nullptr ? b : a), 1.0};
  return product(a, b, 1);
}

UnitProduct divide(const Unit* a, const Unit* b) {
  return b == nullptr ? UnitProduct{unit_of_multiple(a), 1.0} : product(a, b, -1);
}

UnitProduct raise(const Unit* a, const Rational& power) {
  return power == Rational(1) ? UnitProduct{a, 1.0} : product(nullptr, a, power);
}

}  // namespace worksheet
