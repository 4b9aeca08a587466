// Lists of functions and packs.
#pragma once

#include <string>
#include <vector>

#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

// The kinds of a row's arguments: "any", "number" or "matrix".
std::vector<std::string> argument_kinds(const Row& row);

// A row as the pack's table has it: kinds, flags, context, unit rule, pack.
std::string row_text(const Row& row);

// Every row of the loaded packs, an object a line: what its table and its reference say.
std::string functions_json(const Machine& machine);

// The packs of the catalogue. Throws efi::CatalogueError.
std::string packs_text();
std::string packs_json();

}  // namespace worksheet
