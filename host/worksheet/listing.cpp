#include "host/worksheet/listing.hpp"

#include <filesystem>

#include "fmt/format.h"
#include "host/efiutils/catalogue.hpp"
#include "host/worksheet/data_file.hpp"
#include "host/worksheet/json_output.hpp"

namespace worksheet {

namespace {

const char* kind_text(ArgumentKind kind) {
  constexpr const char* kTexts[] = {"any", "number", "matrix"};
  return kTexts[static_cast<int>(kind)];
}

std::vector<std::string> argument_kinds(const Row& row) {
  std::vector<std::string> kinds;
  for (std::size_t k = 0; k < row.argument_count; ++k)
    kinds.emplace_back(kind_text(row.entry->signature->arguments[k]));
  return kinds;
}

std::string rule_text(const Row& row) {
  return row.unit_rule() == nullptr ? "" : std::string(trimmed(row.unit_rule()));
}

bool file_exists(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored);
}

}  // namespace

std::string functions_text(const Machine& machine) {
  std::string text = fmt::format("{:<12}{:<38}{:<9}{:>5}  {}\n", "name", "arguments -> result",
                                 "context", "flags", "unit rule");
  for (const auto& pack : machine.packs)
    for (const Row& row : pack->rows())
      text += fmt::format("{:<12}{:<38}{:<9}{:>5}  {}\n", row.name,
                          fmt::format("{} -> {}", fmt::join(argument_kinds(row), ", "),
                                      kind_text(row.entry->signature->result)),
                          fmt::format("{}", fmt::join(row.context, ", ")), row.entry->flags,
                          rule_text(row));
  return text;
}

std::string functions_json(const Machine& machine) {
  std::string text;
  for (const auto& pack : machine.packs)
    for (const Row& row : pack->rows()) {
      const char* const rule = row.unit_rule();
      const Json json = {{"name", row.name},
                         {"arguments", argument_kinds(row)},
                         {"result", kind_text(row.entry->signature->result)},
                         {"context", row.context},
                         {"flags", row.entry->flags},
                         {"rule", rule == nullptr ? Json(nullptr) : Json(rule)},
                         {"pack", pack->path()}};
      text += json_line(json) + "\n";
    }
  return text;
}

std::string packs_text() {
  std::string text;
  for (const efi::CatalogueEntry& entry : efi::read_catalogue())
    text += fmt::format("{}  {}{}\n", entry.id, entry.path,
                        file_exists(entry.path) ? "" : "  (the file has gone)");
  return text;
}

std::string packs_json() {
  std::string text;
  for (const efi::CatalogueEntry& entry : efi::read_catalogue()) {
    const Json json = {{"id", entry.id}, {"path", entry.path}, {"exists", file_exists(entry.path)}};
    text += json_line(json) + "\n";
  }
  return text;
}

}  // namespace worksheet
