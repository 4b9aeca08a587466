// Values as MathML.
#pragma once

#include <string>

#include "host/efiutils/store.hpp"
#include "host/worksheet/engine/value.hpp"

namespace worksheet {

// "name = value" as one formula, or a formula for each part of a joined value that has not been
// taken apart. The name may be empty. The store is that of the value.
std::string math_markup(const efi::Store& store, const std::string& name, const Value& value,
                        int digits);

}  // namespace worksheet
