// The list of all units.
#pragma once

#include <string>

namespace worksheet {

// All units by kind: a heading and a table for each kind, as Markdown or for a terminal. Throws
// std::runtime_error when the database of units is missing.
std::string unit_list(bool markdown);

}  // namespace worksheet
