#include "host/packs/unit.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <numeric>
#include <unordered_map>

#include "fmt/format.h"
#include "host/packs/unit_names.hpp"
#include "host/text/text.hpp"

namespace worksheet {

namespace {

// Denominators of powers that are recognised: square and cube roots of products and the like.
constexpr int kMostDenominator = 12;

// The largest numerator and denominator of a power.
constexpr std::int64_t kMostPower = 1000;

constexpr const char* kAngle = "rad";

// Single units that a product of several may stand for: coherent ones of the SI, and what customary
// units make. Not the joule: a torque is no energy.
constexpr const char* kSingle[] = {"N",   "Pa", "W",   "V",   "A",   "Ohm", "C",
                                   "F",   "H",  "lm",  "lbf", "kip", "psi", "ksi",
                                   "psf", "mi", "nmi", "ft",  "gal", "lb"};

using Factors = std::vector<Unit::Factor>;

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

// Whether angles count in units of that dimension.
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

Rational turns_of(const Factors& factors) {
  Rational turns;
  for (const Unit::Factor& factor : factors)
    turns = turns + Rational(factor.unit->turns) * factor.power;
  return turns;
}

std::string power_text(const Unit::Factor& factor, const Rational& power) {
  if (power == Rational(1)) return factor.unit->name;
  if (power.den == 1) return fmt::format("{}^{}", factor.unit->name, power.num);
  return fmt::format("{}^({}/{})", factor.unit->name, power.num, power.den);
}

std::string name_of(const Factors& factors) {
  std::vector<std::string> above, below;
  for (const Unit::Factor& factor : factors) {
    if (factor.power.num > 0)
      above.push_back(power_text(factor, factor.power));
    else
      below.push_back(power_text(factor, factor.power * Rational(-1)));
  }
  std::string name = above.empty() ? "1" : joined(above, " ");
  if (below.empty()) return name;
  const std::string divisor = joined(below, " ");
  return name + (below.size() == 1 ? "/" + divisor : fmt::format("/({})", divisor));
}

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

UnitProduct product(const Unit* a, const Unit* b, const Rational& power) {
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

// Whether plain numbers may stand for values in the unit: an angle, or a mere factor.
bool is_near_plain(const Unit& unit) {
  return without_angle(unit.dimension()).empty();
}

// The unit of a multiple of a value.
const Unit* unit_of_multiple(const Unit* unit) {
  if (unit == nullptr || unit->origin() != Unit::Origin::written) return unit;
  return unit_of(unit->factors());
}

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

Unit::Unit(std::vector<Factor> factors, Origin origin)
    : factors_(std::move(factors)),
      name_(name_of(factors_)),
      scale_(scale_of(factors_)),
      dimension_(dimension_of(factors_)),
      turns_(turns_of(factors_)),
      origin_(origin) {
  if (!std::isnormal(scale_)) throw UnitPowerError();
}

const Unit* unit_of(const Factors& factors, Unit::Origin origin) {
  static std::unordered_map<std::string, std::unique_ptr<Unit>> made[3];
  if (factors.empty()) return nullptr;
  std::unique_ptr<Unit>& unit = made[static_cast<int>(origin)][name_of(factors)];
  if (unit == nullptr) unit = std::make_unique<Unit>(factors, origin);
  return unit.get();
}

std::string unit_text(const Unit* unit) {
  return unit == nullptr ? "no unit" : unit->name();
}

std::optional<double> conversion(const Unit* from, const Unit* to) {
  if (from == to) return 1.0;
  if (from == nullptr || to == nullptr) {
    const Unit* const unit = from == nullptr ? to : from;
    if (!is_near_plain(*unit)) return std::nullopt;
    return from == nullptr ? 1.0 / unit->scale() : unit->scale();
  }
  if (without_angle(from->dimension()) != without_angle(to->dimension())) return std::nullopt;
  const double factor = from->scale() / to->scale();
  const Rational angle = angle_in(from->dimension()) + angle_in(to->dimension()) * Rational(-1);
  if (angle == Rational(0) || !counts_angles(from->dimension())) return factor;
  // Turns are the same, whether they are given as an angle or are counted.
  const bool same_turns =
      from->turns() == to->turns() && (angle == to->turns() || angle == to->turns() * Rational(-1));
  if (!same_turns) return std::nullopt;
  return factor / power_of(2.0 * std::numbers::pi, angle);
}

std::optional<double> common_conversion(const Unit* from, const Unit* to) {
  const Unit* const only = from == nullptr ? to : to == nullptr ? from : nullptr;
  if (only != nullptr && !only->dimension().empty() && only->scale() != 1.0) return std::nullopt;
  return conversion(from, to);
}

std::string conversion_hint(const Unit* from, const Unit* to) {
  if (from == nullptr || to == nullptr || conversion(from, to)) return {};
  const Dimension& have = from->dimension();
  const Dimension& want = to->dimension();
  if (without_angle(have) != without_angle(want) || is_near_plain(*from)) return {};
  const bool too_much = (angle_in(have) + angle_in(want) * Rational(-1)).num > 0;
  const std::string start =
      fmt::format("; {} has an angle: {} by ", (have.contains(kAngle) ? from : to)->name(),
                  too_much ? "divide" : "multiply");
  if (have.contains("cd")) return start + "1{sr}";
  return start + "1{turn} if turns are counted, by 1{rad} if radians are";
}

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
