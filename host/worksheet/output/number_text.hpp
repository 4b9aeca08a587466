// Numbers for people.
#pragma once

#include <string>

#include "host/text/number_format.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

// A number in that format: "1.5", "2i", "1.5 - 2i".
std::string number_text(const Number& z, const NumberFormat& format);

// A number or matrix as it is shown in that format: where the format chooses the prefix of a unit,
// in the unit with it. The numbers of a matrix stay, and format->factor is what to multiply them
// by.
Value with_chosen_prefix(const Value& value, NumberFormat* format);

}  // namespace worksheet
