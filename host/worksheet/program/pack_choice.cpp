#include "host/worksheet/program/pack_choice.hpp"

#include <filesystem>
#include <iostream>

#include "fmt/format.h"
#include "host/efiutils/catalogue.hpp"
#include "host/text/text.hpp"
#include "host/worksheet/output/json_output.hpp"
#include "host/worksheet/output/listing.hpp"
#include "host/worksheet/program/terminal.hpp"

namespace worksheet {

namespace {

constexpr std::size_t kMostHiddenNames = 5;  // Of functions, in a message.

// Takes a pack in and says which of its functions earlier packs hide. Throws PackError.
void add_pack(Machine& machine, const std::string& path) {
  std::error_code ignored;
  for (const auto& pack : machine.packs)
    if (std::filesystem::equivalent(pack->path(), path, ignored)) return;
  auto pack = std::make_unique<Pack>(path);
  std::vector<std::string> hidden;
  std::string first;
  for (const Row& row : pack->rows())
    if (const Row* earlier = machine.find_row(row.name)) {
      if (hidden.empty()) first = earlier->pack->path();
      hidden.push_back(row.name);
    }
  machine.add_pack(std::move(pack));
  if (hidden.empty()) return;
  const std::size_t count = hidden.size();
  if (count > kMostHiddenNames) {
    hidden.resize(kMostHiddenNames);
    hidden.emplace_back("...");
  }
  complain(fmt::format("{}: {} of its {} functions are hidden by {}: {}", path, count,
                       machine.packs.back()->rows().size(), first, joined(hidden, ", ")));
}

void add_named_packs(Machine& machine, const std::vector<std::string>& paths) {
  for (const std::string& path : paths) add_pack(machine, path);
}

// The packs of the catalogue; one that cannot be had is reported and left out.
void add_registered_packs(Machine& machine) {
  try {
    for (const efi::CatalogueEntry& entry : efi::read_catalogue()) try {
        add_pack(machine, entry.path);
      } catch (const PackError& error) {
        complain(fmt::format("a registered pack is left out: {} (--unregister {} removes it)",
                             error.what(), entry.path));
      }
  } catch (const efi::CatalogueError& error) {
    complain(error.what());
  }
}

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

void add_packs(Machine& machine, const Options& options) {
  add_named_packs(machine, options.packs);
  if (machine.packs.empty()) add_registered_packs(machine);
  if (!machine.packs.empty()) return;
  const std::string path = neighbouring_pack();
  if (path.empty()) throw PackError("there is no function pack: name one with --pack");
  machine.add_pack(std::make_unique<Pack>(path));
}

void manage_catalogue(const Options& options) {
  if (!options.register_path.empty()) Pack(options.register_path).register_pack();
  if (!options.unregister_path.empty()) unregister(options.unregister_path);
  if (options.list_packs) std::cout << (options.json ? packs_json() : packs_text());
}

}  // namespace worksheet
