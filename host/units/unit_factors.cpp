#include "host/units/unit_factors.hpp"

#include <algorithm>
#include <cmath>

namespace worksheet {

double power_of(double scale, const Rational& power) {
  if (power == Rational(1)) return scale;
  if (power == Rational(-1)) return 1.0 / scale;
  return std::pow(scale, static_cast<double>(power));
}

Dimension dimension_of(const Factors& factors) {
  Dimension dimension;
  for (const Unit::Factor& factor : factors)
    for (const auto& [base, power] : factor.unit->dimension) {
      Rational& sum = dimension[base];
      sum = sum + power * factor.power;
    }
  std::erase_if(dimension, [](const auto& entry) { return entry.second == Rational(0); });
  return dimension;
}

double scale_of(const Factors& factors) {
  double scale = 1.0;
  for (const Unit::Factor& factor : factors) scale *= power_of(factor.unit->scale, factor.power);
  return scale;
}

bool counts_angles(const Dimension& dimension) {
  return dimension.contains("cd") ||
         std::all_of(dimension.begin(), dimension.end(),
                     [](const auto& entry) { return entry.first == kAngle || entry.first == "s"; });
}

Rational angle_in(const Dimension& dimension) {
  const auto found = dimension.find(kAngle);
  return found == dimension.end() ? Rational(0) : found->second;
}

Dimension without_angle(Dimension dimension) {
  dimension.erase(kAngle);
  return dimension;
}

}  // namespace worksheet
