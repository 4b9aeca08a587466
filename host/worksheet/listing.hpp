// Lists of functions and packs.
#pragma once

#include <string>

#include "host/worksheet/machine.hpp"

namespace worksheet {

// Every row of the loaded packs: name, arguments, context, flags, unit rule.
std::string functions_text(const Machine& machine);
std::string functions_json(const Machine& machine);

// The packs of the catalogue. Throws efi::CatalogueError.
std::string packs_text();
std::string packs_json();

}  // namespace worksheet
