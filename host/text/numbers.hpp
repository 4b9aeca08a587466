// Numbers as worksheets and data files write them.
#pragma once

#include <complex>
#include <optional>
#include <string_view>

namespace worksheet {

// A decimal number, "inf" or "nan", with or without sign, whatever the locale; nothing else. Of any
// length, rounded once to the nearest double; one too small for a double is a zero of its sign, one
// too large is none.
std::optional<double> parse_real(std::string_view text);
// The same, or "2i", "1+2i", "1-2j".
std::optional<std::complex<double>> parse_number(std::string_view text);

}  // namespace worksheet
