// The names of units, with their prefixes.
#pragma once

#include <string>

#include "host/units/unit.hpp"

namespace worksheet {

// The unit of that name, prefixes included; null if there is none. Throws std::runtime_error, with
// the reason, for one that cannot be calculated with or has two meanings, or when the database of
// units is missing.
const NamedUnit* find_named_unit(const std::string& name);

// What a name that is none may have been meant for: "kN m" for "kNm", "kPa" for "KPa"; empty if
// nothing is near.
std::string likely_unit(const std::string& name);

}  // namespace worksheet
