#include "host/units/unit_display.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "host/units/unit_factors.hpp"
#include "host/units/unit_names.hpp"

namespace worksheet {

namespace {

// Units with names that results are shown in. No two are of one dimension.
constexpr const char* kNamed[] = {"N", "Pa", "W", "V",  "A",  "Ohm", "S", "C", "F",
                                  "H", "Wb", "T", "lm", "lx", "m",   "g", "s"};

constexpr std::array<const char*, 9> kPrefixes = {"p", "n", "u", "m", "", "k", "M", "G", "T"};
constexpr std::ptrdiff_t kNoPrefix = 4;

const Dimension& dimension_of(const char* name) {
  return find_named_unit(name)->dimension;
}

// The prefixes in use with a unit: nobody writes Mg, ks or Mm.
std::pair<std::ptrdiff_t, std::ptrdiff_t> prefixes_of(const std::string& symbol) {
  if (symbol == "s") return {0, kNoPrefix};
  if (symbol == "m" || symbol == "g" || symbol == "mol") return {0, kNoPrefix + 1};
  if (symbol == "L" || symbol == "K") return {2, kNoPrefix};
  return {0, static_cast<std::ptrdiff_t>(kPrefixes.size()) - 1};
}

// Whether the unit is a multiple of SI units by a power of ten, or that of an hour or a minute; the
// acceleration of gravity stands for its number.
bool is_metric(const NamedUnit& unit) {
  if (unit.name == "g0") return true;
  for (const double time : {1.0, 60.0, 3600.0}) {
    const double power = std::log10(unit.scale / time);
    if (std::fabs(power - std::round(power)) < 1e-12) return true;
  }
  return false;
}

UnitProduct converted(const Unit* from, const Factors& to) {
  const Unit* const unit = unit_of(to);
  return {unit, conversion(from, unit).value_or(1.0)};
}

// Numbers as they are printed: what would be rounded to 1000 counts as 1000.
bool reads_well(double magnitude) {
  const double rounded = magnitude * (1.0 + 1e-9);
  return rounded >= 1.0 && rounded < 1000.0;
}

// In the unit of that symbol, with the prefix that suits the magnitude, times the other factors.
UnitProduct with_prefix(const Unit* unit, double magnitude, const std::string& symbol,
                        const Factors& others = {}) {
  const auto in_units_of = [&](const NamedUnit* named) {
    Factors factors = {{named, 1}};
    factors.insert(factors.end(), others.begin(), others.end());
    return converted(unit, factors);
  };
  const UnitProduct plain = in_units_of(find_named_unit(symbol));
  if (magnitude == 0.0 || !std::isfinite(magnitude)) return plain;
  const auto [least, most] = prefixes_of(symbol);
  for (std::ptrdiff_t k = least; k <= most; ++k) {
    const NamedUnit* const named = find_named_unit(kPrefixes[static_cast<std::size_t>(k)] + symbol);
    if (named == nullptr) continue;
    const UnitProduct prefixed = in_units_of(named);
    if (k == most || magnitude * prefixed.factor * (1.0 + 1e-9) < 1000.0) return prefixed;
  }
  return plain;
}

// A force times a power of a length, and nothing else.
bool is_force_and_length(const Factors& factors) {
  int forces = 0, others = 0;
  for (const Unit::Factor& factor : factors) {
    if (factor.unit->dimension == dimension_of("N") && factor.power == Rational(1))
      ++forces;
    else if (factor.unit->dimension != dimension_of("m"))
      ++others;
  }
  return forces == 1 && others == 0 && factors.size() == 2;
}

// Whether one of the factors has the dimension of one of these units.
bool holds(const Factors& factors, std::initializer_list<const char*> names) {
  return std::any_of(factors.begin(), factors.end(), [&](const Unit::Factor& factor) {
    return std::any_of(names.begin(), names.end(), [&](const char* name) {
      return factor.unit->dimension == dimension_of(name);
    });
  });
}

// The power of the length beside a force; nothing if there is something else.
std::optional<Rational> length_beside_force(Dimension dimension) {
  const Rational length = dimension.contains("m") ? dimension["m"] : Rational(0);
  dimension.erase("m");
  const Dimension rest = {{"kg", 1}, {"s", -2}};
  return dimension == rest ? std::optional(length + Rational(-1)) : std::nullopt;
}

// N or kN and a power of m.
UnitProduct as_force_and_length(const Unit* unit, double magnitude, const Rational& power) {
  const NamedUnit* const metre = find_named_unit("m");
  const UnitProduct plain = converted(unit, {{find_named_unit("N"), 1}, {metre, power}});
  if (reads_well(magnitude * plain.factor) || !(magnitude * plain.factor > 1.0)) return plain;
  return converted(unit, {{find_named_unit("kN"), 1}, {metre, power}});
}

// A power or a current times hours: "Wh" or "Ah"; null if it is neither.
const char* over_hours(const Factors& factors) {
  if (factors.size() != 2) return nullptr;
  const std::size_t hour = factors[0].unit->name == "h" ? 0 : 1;
  const bool once = factors[0].power == Rational(1) && factors[1].power == Rational(1);
  if (factors[hour].unit->name != "h" || !once) return nullptr;
  const std::string& rate = factors[1 - hour].unit->metric;
  return rate == "W" ? "Wh" : rate == "A" ? "Ah" : nullptr;
}

UnitProduct as_named(const Unit* unit, double magnitude) {
  const Factors& factors = unit->factors();
  if (const char* name = over_hours(factors)) return with_prefix(unit, magnitude, name);
  for (const char* name : kNamed)
    if (unit->dimension() == dimension_of(name)) return with_prefix(unit, magnitude, name);
  if (factors.size() == 1) return {unit, 1.0};
  const auto length = length_beside_force(unit->dimension());
  if (!length) return {unit, 1.0};
  if (is_force_and_length(factors)) {
    const std::size_t force = factors[0].unit->dimension == dimension_of("N") ? 0 : 1;
    return {unit_of({factors[force], factors[1 - force]}), 1.0};
  }
  const bool of_gas = holds(factors, {"Pa"}) && holds(factors, {"L"});
  const bool of_bases = !holds(factors, {"J", "W"}) && *length == Rational(-1);
  if ((holds(factors, {"N", "Pa"}) && !of_gas) || of_bases)
    return as_force_and_length(unit, magnitude, *length);
  return *length == Rational(1) ? with_prefix(unit, magnitude, "J") : UnitProduct{unit, 1.0};
}

}  // namespace

UnitProduct readable_unit(const Unit* unit, double magnitude) {
  if (unit == nullptr || unit->origin() != Unit::Origin::calculated) return {unit, 1.0};
  const Factors& factors = unit->factors();
  const auto metric = [](const Unit::Factor& factor) { return is_metric(*factor.unit); };
  if (!std::all_of(factors.begin(), factors.end(), metric)) return {unit, 1.0};
  if (factors.size() > 1 || factors[0].power != Rational(1)) return as_named(unit, magnitude);
  const std::string& symbol = factors[0].unit->metric;
  if (symbol.empty() || reads_well(magnitude)) return {unit, 1.0};
  return with_prefix(unit, magnitude, symbol);
}

UnitProduct prefixed_unit(const Unit* unit, double magnitude) {
  if (unit == nullptr || unit->origin() == Unit::Origin::asked) return {unit, 1.0};
  const Factors& factors = unit->factors();
  const Unit::Factor& first = factors.front();
  if (first.power != Rational(1) || first.unit->metric.empty()) return {unit, 1.0};
  return with_prefix(unit, magnitude, first.unit->metric, {factors.begin() + 1, factors.end()});
}

}  // namespace worksheet
