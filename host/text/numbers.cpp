#include "host/text/numbers.hpp"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace worksheet {

namespace {

// Whether a decimal number that no double can hold is too small for one, and not too large: the
// power of ten of its first significant digit decides.
bool is_tiny(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  const std::size_t mantissa = std::min(text.find_first_of("eE"), text.size());
  const std::size_t point = std::min(text.find('.'), mantissa);
  const std::size_t digit = text.find_first_not_of("0.");
  const auto place = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(digit);
  if (mantissa == text.size()) return place < 0;
  std::string_view power = text.substr(mantissa + 1);
  const bool negative = power.starts_with('-');
  if (negative || power.starts_with('+')) power.remove_prefix(1);
  std::int64_t exponent = 0;
  const auto read = std::from_chars(power.data(), power.data() + power.size(), exponent);
  constexpr std::int64_t kBeyondAll = std::int64_t{1} << 60;
  if (read.ec != std::errc() || exponent > kBeyondAll) return negative;
  return place + (negative ? -exponent : exponent) < 0;
}

}  // namespace

std::optional<double> parse_real(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  double value = 0.0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ptr != end || text.empty()) return std::nullopt;
  if (result.ec == std::errc::result_out_of_range) {
    if (!is_tiny(text)) return std::nullopt;
    return text.starts_with('-') ? -0.0 : 0.0;
  }
  if (result.ec != std::errc()) return std::nullopt;
  return value;
}

std::optional<std::complex<double>> parse_number(std::string_view text) {
  if (const auto real = parse_real(text)) return *real;
  if (text.empty() || (text.back() != 'i' && text.back() != 'j')) return std::nullopt;
  text.remove_suffix(1);
  if (const auto imaginary = parse_real(text)) return std::complex<double>(0.0, *imaginary);
  // The sign between the parts: the last one that is not an exponent's; no other can be it.
  for (std::size_t at = text.size(); at-- > 1;) {
    if ((text[at] != '+' && text[at] != '-') || text[at - 1] == 'e' || text[at - 1] == 'E')
      continue;
    const auto re = parse_real(text.substr(0, at));
    const auto im = parse_real(text.substr(at));
    return re && im ? std::optional(std::complex<double>(*re, *im)) : std::nullopt;
  }
  return std::nullopt;
}

}  // namespace worksheet
