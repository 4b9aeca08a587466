#include "host/worksheet/session/load_packs.hpp"

#include <filesystem>

#include "fmt/format.h"
#include "host/efiutils/catalogue.hpp"
#include "host/efiutils/system/paths.hpp"
#include "host/text/text.hpp"

namespace worksheet {

namespace {

constexpr std::size_t kMostHiddenNames = 5;  // Of functions, in a message.

// Takes a pack in and says which of its functions earlier packs hide. Throws PackError.
void add_pack(Machine& machine, const std::string& path, const Say& say) {
  std::error_code ignored;
  for (const auto& pack : machine.packs)
    if (std::filesystem::equivalent(efi::path_of(pack->path()), efi::path_of(path), ignored))
      return;
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
  say(fmt::format("{}: {} of its {} functions are hidden by {}: {}", path, count,
                  machine.packs.back()->rows().size(), first, joined(hidden, ", ")));
}

// The packs of the catalogue; one that cannot be had is reported and left out.
void add_registered_packs(Machine& machine, const Say& say) {
  try {
    for (const efi::CatalogueEntry& entry : efi::read_catalogue()) try {
        add_pack(machine, entry.path, say);
      } catch (const PackError& error) {
        say(fmt::format("a registered pack is left out: {} (--unregister {} removes it)",
                        error.what(), entry.path));
      }
  } catch (const efi::CatalogueError& error) {
    say(error.what());
  }
}

}  // namespace

void load_packs(Machine& machine, std::span<const std::string> paths, const Say& say) {
  for (const std::string& path : paths) add_pack(machine, path, say);
  if (machine.packs.empty()) add_registered_packs(machine, say);
  if (!machine.packs.empty()) return;
  const std::string path = neighbouring_pack();
  if (path.empty()) throw PackError("there is no function pack: name one with --pack");
  machine.add_pack(std::make_unique<Pack>(path));
}

}  // namespace worksheet
