// What the factors of a unit come to.
#pragma once

#include <vector>

#include "host/units/unit.hpp"

namespace worksheet {

using Factors = std::vector<Unit::Factor>;

// The base unit of angles.
inline constexpr const char* kAngle = "rad";

// A scale to a power.
double power_of(double scale, const Rational& power);

// The dimension and the scale of a product.
Dimension dimension_of(const Factors& factors);
double scale_of(const Factors& factors);

// Whether angles count in units of that dimension.
bool counts_angles(const Dimension& dimension);
// The power of the angle in a dimension, and the dimension without it.
Rational angle_in(const Dimension& dimension);
Dimension without_angle(Dimension dimension);

}  // namespace worksheet
