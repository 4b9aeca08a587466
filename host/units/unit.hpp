// Units of physical quantities: products of named units with rational powers.
//
// A unit is made once and lives as long as the program; the null pointer stands for a plain number.
//
// Angles: the radian is a base unit of its own beside those of the SI, so that rad/s, Hz and 1/s
// are three things. It counts in units of time and of light only. Everywhere else an angle is the
// plain number of its radians: rad m/s is m/s, N m/rad is N m.
#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace worksheet {

// The largest numerator and denominator of a power that is calculated with.
inline constexpr std::int64_t kMostPower = 1000;

// One is beyond that.
struct UnitPowerError : std::runtime_error {
  UnitPowerError() : std::runtime_error("this unit is too large a power") {}
};

// A fraction in lowest terms with a positive denominator, both of them at most 1000 in magnitude.
struct Rational {
  // Throws UnitPowerError.
  Rational(std::int64_t numerator = 0, std::int64_t denominator = 1);
  auto operator<=>(const Rational&) const = default;
  explicit operator double() const { return static_cast<double>(num) / den; }

  int num;
  int den;
};
// Both throw UnitPowerError.
Rational operator+(const Rational& a, const Rational& b);
Rational operator*(const Rational& a, const Rational& b);
// The fraction with a small denominator that x is, if it is one. Throws UnitPowerError.
std::optional<Rational> to_rational(double x);

// Powers of the base units m, kg, s, A, K, mol, cd, rad and bit by name.
using Dimension = std::map<std::string, Rational>;

// A name such as "kN": `scale` base units of its dimension.
struct NamedUnit {
  std::string name;
  double scale;
  Dimension dimension;
  int turns = 0;       // The power of the turns that it counts: 1 for Hz, rpm and a turn.
  std::string metric;  // Of one that takes every prefix: the symbol without one, "N".
};

class Unit {
 public:
  struct Factor {
    const NamedUnit* unit;
    Rational power;
  };

  // How a value came to have the unit.
  enum class Origin {
    calculated,
    written,  // Someone wrote it behind a number: the value is shown in it.
    asked,    // Someone asked for it with "in": multiples of the value are shown in it, too.
  };

  // Throws UnitPowerError, also where the scale is beyond the range of numbers.
  Unit(std::vector<Factor> factors, Origin origin);

  // As users write it, "kN/m^2".
  const std::string& name() const { return name_; }
  const std::vector<Factor>& factors() const { return factors_; }
  // The number of coherent base units that it is.
  double scale() const { return scale_; }
  const Dimension& dimension() const { return dimension_; }
  Rational turns() const { return turns_; }
  Origin origin() const { return origin_; }

 private:
  std::vector<Factor> factors_;
  std::string name_;
  double scale_ = 1.0;
  Dimension dimension_;
  Rational turns_;
  Origin origin_;
};

// The one unit with these factors and that origin; null when there are none. Throws UnitPowerError.
const Unit* unit_of(const std::vector<Unit::Factor>& factors,
                    Unit::Origin origin = Unit::Origin::calculated);

// Text that is no unit; `offset` is the place in it.
struct UnitError : std::runtime_error {
  UnitError(std::size_t at, const std::string& what) : std::runtime_error(what), offset(at) {}
  std::size_t offset;
};

// The unit that the text says: factors apart by blanks, "*", "." or "·"; "/" divides by the factor
// that follows it; powers as "m^2", "m2", "m²", "m^-1" or "m^(1/2)". Throws UnitError.
const Unit* parse_unit(std::string_view text, Unit::Origin origin = Unit::Origin::written);

// "kN", or "no unit".
std::string unit_text(const Unit* unit);

// What the numbers in unit `from` are to be multiplied by to be in unit `to`; nothing when the two
// are not of one dimension. Plain numbers are angles in radians, and turns over time are the same
// number of Hz.
std::optional<double> conversion(const Unit* from, const Unit* to);
// The same for two values that meet in a sum, a comparison or a matrix: a plain number is not taken
// for an angle then, unless in radians.
std::optional<double> common_conversion(const Unit* from, const Unit* to);
// How to convert by hand where an angle alone stands against it: "; rad/s has an angle...";
// "; kn and kN are two units" where they look alike; else empty.
std::string conversion_hint(const Unit* from, const Unit* to);

// A product in a unit that reads well; the numbers are to be multiplied by `factor`. All three
// throw UnitPowerError.
struct UnitProduct {
  const Unit* unit;
  double factor;
};
UnitProduct multiply(const Unit* a, const Unit* b);
UnitProduct divide(const Unit* a, const Unit* b);
UnitProduct raise(const Unit* a, const Rational& power);

}  // namespace worksheet
