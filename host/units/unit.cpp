#include "host/units/unit.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <unordered_map>

#include "fmt/format.h"
#include "host/text/nearest.hpp"
#include "host/text/text.hpp"
#include "host/units/unit_factors.hpp"

namespace worksheet {

namespace {

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

// Whether plain numbers may stand for values in the unit: an angle, or a mere factor.
bool is_near_plain(const Unit& unit) {
  return without_angle(unit.dimension()).empty();
}

}  // namespace

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

namespace {

// Two units of which only the case of letters differs are easily taken for one another.
std::string look_alikes(const Unit& a, const Unit& b) {
  for (const Unit::Factor& x : a.factors())
    for (const Unit::Factor& y : b.factors())
      if (x.unit->name != y.unit->name && edit_distance(x.unit->name, y.unit->name, 1) == 0)
        return fmt::format("; {} and {} are two units", x.unit->name, y.unit->name);
  return {};
}

}  // namespace

std::string conversion_hint(const Unit* from, const Unit* to) {
  if (from == nullptr || to == nullptr || conversion(from, to)) return {};
  if (const std::string two = look_alikes(*from, *to); !two.empty()) return two;
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

}  // namespace worksheet
