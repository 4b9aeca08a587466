// The lists that the program prints: of functions and of packs.
#pragma once

#include <string>
#include <vector>

#include "host/worksheet/help/reference.hpp"

namespace worksheet {

// The entries one by one with their summaries, under their groups.
std::string reference_list(const std::vector<ReferenceEntry>& entries, int width);

// The packs of the catalogue, one a line. Throws efi::CatalogueError.
std::string packs_text();

}  // namespace worksheet
