#include "host/efiutils/catalogue.hpp"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "host/efiutils/system/files.hpp"
#include "host/efiutils/system/paths.hpp"
#include "host/efiutils/system/platform.hpp"
#include "pack/host_interface.hpp"

namespace efi {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

// What this program writes; it reads no other.
constexpr int kFormat = 1;

std::string last_failure;

[[noreturn]] void fail(const std::string& what) {
  throw CatalogueError(catalogue_path() + ": " + what);
}

[[noreturn]] void fail_with(int error, const std::string& what) {
  fail(what + ": " + file_error_words(error));
}

std::vector<CatalogueEntry> entries_of(const Json& json) {
  if (json.at("format") != kFormat) fail("written in a format that is not known here");
  std::vector<CatalogueEntry> entries;
  for (const Json& pack : json.at("packs")) entries.push_back({pack.at("id"), pack.at("path")});
  return entries;
}

std::string json_text(const std::vector<CatalogueEntry>& entries) {
  Json packs = Json::array();
  for (const CatalogueEntry& entry : entries)
    packs.push_back({{"id", entry.id}, {"path", entry.path}});
  return Json{{"format", kFormat}, {"packs", packs}}.dump(2) + "\n";
}

// The lock under which all write; it goes with the program. Only a file of that name is one.
Descriptor locked(const std::string& path) {
  Descriptor lock = open_lock(path + ".lock");
  const int error = lock.get() < 0 ? errno : file_error(lock.get());
  if (error != 0) fail_with(error, "its lock cannot be had");
  while (!take_lock(lock.get()))
    if (errno != EINTR) fail_with(errno, "cannot be locked");
  return lock;
}

// Reads the catalogue, lets `change` work on the entries and writes them, under a lock.
template <class Change>
void update_catalogue(Change change) {
  const std::string path = catalogue_path();
  std::error_code ignored;
  fs::create_directories(efi::path_of(path).parent_path(), ignored);
  const Descriptor lock = locked(path);
  remove_leavings(path);
  std::vector<CatalogueEntry> entries = read_catalogue();
  change(entries);
  if (const int error = replace_file(path, json_text(entries)))
    fail_with(error, "cannot be written");
}

// An identifier as it is written: the first three groups are little-endian numbers.
std::string identifier_text(const PackIdentifier& identifier) {
  constexpr int kOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
  std::string text = "{";
  for (int k = 0; k < 16; ++k) {
    if (k == 4 || k == 6 || k == 8 || k == 10) text += '-';
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", identifier.bytes[kOrder[k]]);
    text += digits;
  }
  return text + "}";
}

std::string library_path(const void* module) {
  const std::string library = library_of(module);
  if (library.empty()) throw CatalogueError("the module's library is not known");
  return efi::utf8_of(fs::absolute(efi::path_of(library)).lexically_normal());
}

// Runs a registration; 0, or 1 and the reason in last_failure.
template <class Action>
std::int32_t report(Action action) noexcept {
  try {
    action();
    return 0;
  } catch (const std::exception& error) {
    last_failure = error.what();
    return 1;
  }
}

bool remove_entry(std::vector<CatalogueEntry>& entries, const std::string& id) {
  return std::erase_if(entries, [&](const CatalogueEntry& e) { return e.id == id; }) != 0;
}

}  // namespace

std::string catalogue_path() {
  const std::string path = environment("WORKSHEET_CATALOGUE");
  return path.empty() ? user_data() + "/worksheet/packs.json" : path;
}

std::vector<CatalogueEntry> read_catalogue() {
  int error = 0;
  const auto text = read_file(catalogue_path(), &error);
  if (error == ENOENT || error == ENOTDIR) return {};
  if (!text) fail_with(error, "cannot be read");
  try {
    return entries_of(Json::parse(*text));
  } catch (const Json::exception& error) {
    fail(std::string("is corrupt: ") + error.what());
  }
}

bool forget_pack(const std::string& path) {
  const std::string library = efi::utf8_of(fs::absolute(efi::path_of(path)).lexically_normal());
  bool found = false;
  update_catalogue([&](std::vector<CatalogueEntry>& entries) {
    found = std::erase_if(entries, [&](const CatalogueEntry& e) { return e.path == library; }) != 0;
  });
  return found;
}

const std::string& catalogue_failure() {
  return last_failure;
}

}  // namespace efi

std::int32_t RegisterEfiFunctionPack(void* module, const PackIdentifier* identifier) {
  return efi::report([&] {
    const efi::CatalogueEntry entry = {efi::identifier_text(*identifier),
                                       efi::library_path(module)};
    efi::update_catalogue([&](std::vector<efi::CatalogueEntry>& entries) {
      efi::remove_entry(entries, entry.id);
      entries.push_back(entry);
    });
  });
}

std::int32_t UnregisterEfiFunctionPack(const PackIdentifier* identifier) {
  return efi::report([&] {
    const std::string id = efi::identifier_text(*identifier);
    efi::update_catalogue([&](std::vector<efi::CatalogueEntry>& entries) {
      if (!efi::remove_entry(entries, id)) throw efi::CatalogueError(id + " is not registered");
    });
  });
}
