// Numbers for people.
#pragma once

#include <string>

#include "host/worksheet/engine/value.hpp"

namespace worksheet {

// A number with as many significant digits: "1.5", "2i", "1.5 - 2i".
std::string number_text(const Number& z, int digits);

}  // namespace worksheet
