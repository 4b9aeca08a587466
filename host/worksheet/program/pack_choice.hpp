// The packs of a run, and the catalogue of packs.
#pragma once

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/program/options.hpp"

namespace worksheet {

// Loads the packs that the options name; without any those of the catalogue; without any the one
// beside the program. Throws PackError when there is no pack at all.
void add_packs(Machine& machine, const Options& options);

// Enters packs into the catalogue, removes them, lists them. Throws PackError or
// efi::CatalogueError.
void manage_catalogue(const Options& options);

}  // namespace worksheet
