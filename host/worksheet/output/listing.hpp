// The lists that the program prints: of functions, packs and variables.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/worksheet/help/reference.hpp"
#include "host/worksheet/values/variable.hpp"

namespace worksheet {

// The entries one by one with their summaries, under their groups.
std::string reference_list(const std::vector<ReferenceEntry>& entries, int width);

// What kind of value it is: "number", "3 x 2 matrix", "f(i, j)".
std::string kind_words(const Value& value);

// The variables with their kinds and units, one a line.
std::string variables_text(std::span<const Variable* const> variables);

// The packs of the catalogue, one a line. Throws efi::CatalogueError.
std::string packs_text();

}  // namespace worksheet
