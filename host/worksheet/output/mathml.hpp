// Values as MathML.
#pragma once

#include <string>

#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

// "name = value" as one formula, or a formula for each part of a joined value that has not been
// taken apart. The name may be empty.
std::string math_markup(const Machine& machine, const std::string& name, const Value& value,
                        int digits);

}  // namespace worksheet
