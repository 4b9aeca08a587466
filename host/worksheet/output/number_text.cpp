#include "host/worksheet/output/number_text.hpp"

#include <cmath>

#include "fmt/format.h"
#include "host/units/unit_display.hpp"
#include "host/worksheet/engine/readable.hpp"

namespace worksheet {

namespace {

// Beyond it a number with a point would be digits that it does not have.
constexpr double kMostFixed = 1e15;

// With an exponent that three divides, and as many digits before the point as it takes: "12.35e+03"
// of "1.235e+04". Without the exponent 0.
std::string engineering_text(double x, int digits) {
  const std::string scientific = fmt::format("{:.{}e}", std::fabs(x), digits - 1);
  const std::size_t mark = scientific.find('e');
  const int exponent = std::stoi(scientific.substr(mark + 1));
  const int third = static_cast<int>(std::floor(exponent / 3.0)) * 3;
  const auto before = static_cast<std::size_t>(exponent - third + 1);
  std::string all = scientific.substr(0, 1);
  if (mark > 1) all += scientific.substr(2, mark - 2);
  if (all.size() < before) all.resize(before, '0');
  if (all.size() > before) all.insert(before, 1, '.');
  return fmt::format("{}{}{}", x < 0.0 ? "-" : "", all,
                     third == 0 ? "" : fmt::format("e{:+03d}", third));
}

std::string real_text(double number, const NumberFormat& format) {
  using enum NumberFormat::Kind;
  const double x = number == 0.0 ? 0.0 : number * format.factor;
  if (std::isnan(x)) return "nan";
  if (std::isinf(x)) return x > 0.0 ? "inf" : "-inf";
  if (format.kind == engineering) return engineering_text(x, format.digits);
  if (format.kind == scientific) return fmt::format("{:.{}e}", x, format.digits - 1);
  if (format.kind == automatic) return fmt::format("{:.{}g}", x, format.digits);
  if (std::fabs(x) >= kMostFixed) return fmt::format("{:.{}e}", x, format.digits);
  const std::string text = fmt::format("{:.{}f}", x, format.digits);
  // A zero has no sign, be it one by rounding.
  return text[0] == '-' && text.find_first_not_of("-0.") == std::string::npos ? text.substr(1)
                                                                              : text;
}

}  // namespace

std::string number_text(const Number& z, const NumberFormat& format) {
  const std::string re = real_text(z.real(), format);
  if (z.imag() == 0.0) return re;
  const std::string im = real_text(std::fabs(z.imag()), format) + "i";
  const bool minus = std::signbit(z.imag());
  if (z.real() == 0.0) return minus ? fmt::format("-{}", im) : im;
  return re + (minus ? " - " : " + ") + im;
}

Value with_chosen_prefix(const Value& value, NumberFormat* format) {
  const bool chooses = format->kind == NumberFormat::Kind::engineering && value.unit != nullptr;
  if (!chooses || !(is_number(value) || is_matrix(value))) return value;
  const UnitProduct shown = prefixed_unit(value.unit, largest_magnitude(value));
  if (!is_number(value)) {
    format->factor = shown.factor;
    return with_unit(value, shown.unit);
  }
  return with_unit(number_value(number(value) * shown.factor), shown.unit);
}

}  // namespace worksheet
