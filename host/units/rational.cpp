// Powers of units.
#include <cmath>
#include <cstdlib>
#include <numeric>

#include "host/units/unit.hpp"

namespace worksheet {

namespace {

// Denominators of powers that are recognised: square and cube roots of products and the like.
constexpr int kMostDenominator = 12;

}  // namespace

// Neither sums nor products of two fractions within the bound overflow 64 bits.
Rational::Rational(std::int64_t numerator, std::int64_t denominator) {
  const std::int64_t divisor = std::gcd(numerator, denominator) * (denominator < 0 ? -1 : 1);
  numerator /= divisor;
  denominator /= divisor;
  if (std::abs(numerator) > kMostPower || denominator > kMostPower) throw UnitPowerError();
  num = static_cast<int>(numerator);
  den = static_cast<int>(denominator);
}

Rational operator+(const Rational& a, const Rational& b) {
  return {std::int64_t{a.num} * b.den + std::int64_t{b.num} * a.den, std::int64_t{a.den} * b.den};
}

Rational operator*(const Rational& a, const Rational& b) {
  return {std::int64_t{a.num} * b.num, std::int64_t{a.den} * b.den};
}

std::optional<Rational> to_rational(double x) {
  constexpr double kNear = 1e-9;
  if (std::fabs(x) > static_cast<double>(kMostPower)) throw UnitPowerError();
  for (int den = 1; den <= kMostDenominator; ++den)
    if (std::fabs(x * den - std::round(x * den)) < kNear)
      return Rational(std::llround(x * den), den);
  return std::nullopt;
}

}  // namespace worksheet
