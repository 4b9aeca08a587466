// The catalogue of function packs: a JSON file in the user's data directory, or the one that the
// environment variable WORKSHEET_CATALOGUE names. Packs enter and leave it by
// RegisterEfiFunctionPack and UnregisterEfiFunctionPack.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace efi {

#pragma GCC visibility push(default)

// A pack that is registered.
struct CatalogueEntry {
  std::string id;    // The pack's identifier, "{5C1E07A2-...}".
  std::string path;  // Its library.
};

// The catalogue cannot be read or written; it is then as it was.
struct CatalogueError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The catalogue's file, whether there is one or not.
std::string catalogue_path();

// The packs in the catalogue; none when there is no such file. Throws CatalogueError.
std::vector<CatalogueEntry> read_catalogue();

// Removes the entries of a library that cannot be asked to do it itself: its file has gone, say.
// False if there is none. Throws CatalogueError.
bool forget_pack(const std::string& path);

// Why the last RegisterEfiFunctionPack or UnregisterEfiFunctionPack that failed did so.
const std::string& catalogue_failure();

#pragma GCC visibility pop

}  // namespace efi
