#include "host/text/numbers.hpp"

#include <charconv>

namespace worksheet {

std::optional<double> parse_real(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  double value = 0.0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ptr != end || text.empty()) return std::nullopt;
  if (result.ec == std::errc::result_out_of_range) {
    // Too small for a double: zero. Too large: no number that can be had.
    const std::size_t exponent = text.find_first_of("eE");
    const bool small = exponent == std::string_view::npos
                           ? text.find('.') < 3
                           : text.substr(exponent + 1).starts_with('-');
    return small ? std::optional(0.0) : std::nullopt;
  }
  if (result.ec != std::errc()) return std::nullopt;
  return value;
}

std::optional<std::complex<double>> parse_number(std::string_view text) {
  if (const auto real = parse_real(text)) return *real;
  if (text.empty() || (text.back() != 'i' && text.back() != 'j')) return std::nullopt;
  text.remove_suffix(1);
  if (const auto imaginary = parse_real(text)) return std::complex<double>(0.0, *imaginary);
  // The sign between the parts: the last one that is not an exponent's.
  for (std::size_t at = text.size(); at-- > 1;) {
    if ((text[at] != '+' && text[at] != '-') || text[at - 1] == 'e' || text[at - 1] == 'E')
      continue;
    const auto re = parse_real(text.substr(0, at));
    const auto im = parse_real(text.substr(at));
    if (re && im) return std::complex<double>(*re, *im);
  }
  return std::nullopt;
}

}  // namespace worksheet
