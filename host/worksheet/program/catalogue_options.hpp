// The catalogue of packs.
#pragma once

#include "host/worksheet/program/options.hpp"

namespace worksheet {

// Enters packs into the catalogue, removes them, lists them. Throws PackError or
// efi::CatalogueError.
void manage_catalogue(const Options& options);

}  // namespace worksheet
