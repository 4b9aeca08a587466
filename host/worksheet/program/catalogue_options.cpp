#include "host/worksheet/program/catalogue_options.hpp"

#include <iostream>

#include "fmt/format.h"
#include "host/efiutils/catalogue.hpp"
#include "host/worksheet/output/json_output.hpp"
#include "host/worksheet/output/listing.hpp"
#include "host/worksheet/program/system/terminal.hpp"

namespace worksheet {

namespace {

// Lets the pack remove itself from the catalogue; one that cannot be had is removed for it.
void unregister(const std::string& path) {
  try {
    Pack(path).unregister_pack();
  } catch (const PackError& error) {
    if (!efi::forget_pack(path)) throw;
    complain(fmt::format("{}: removed from the catalogue, unasked: {}", path, error.what()));
  }
}

}  // namespace

void manage_catalogue(const Options& options) {
  if (!options.register_path.empty()) Pack(options.register_path).register_pack();
  if (!options.unregister_path.empty()) unregister(options.unregister_path);
  if (options.list_packs) std::cout << (options.json ? packs_json() : packs_text());
}

}  // namespace worksheet
