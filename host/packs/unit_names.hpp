// The names of units, looked up in UDUNITS-2.
#pragma once

#include <string>

#include "host/packs/unit.hpp"

namespace worksheet {

// The unit of that name, prefixes included; null if there is none. Throws std::runtime_error, with
// the reason, for one that cannot be calculated with, or when the database of units is missing.
const NamedUnit* find_named_unit(const std::string& name);

}  // namespace worksheet
