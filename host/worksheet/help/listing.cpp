#include "host/worksheet/help/listing.hpp"

#include <filesystem>

#include "fmt/format.h"
#include "host/efiutils/catalogue.hpp"
#include "host/worksheet/data/data_file.hpp"
#include "host/worksheet/help/reference.hpp"
#include "host/worksheet/output/json_output.hpp"

namespace worksheet {

namespace {

const char* kind_text(ArgumentKind kind) {
  constexpr const char* kTexts[] = {"any", "number", "matrix"};
  return kTexts[static_cast<int>(kind)];
}

std::string rule_text(const Row& row) {
  return row.unit_rule() == nullptr ? "" : std::string(trimmed(row.unit_rule()));
}

bool file_exists(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored);
}

}  // namespace

std::vector<std::string> argument_kinds(const Row& row) {
  std::vector<std::string> kinds;
  for (std::size_t k = 0; k < row.argument_count; ++k)
    kinds.emplace_back(kind_text(row.entry->signature->arguments[k]));
  return kinds;
}

std::string row_text(const Row& row) {
  std::string text =
      fmt::format("\n{}: {} -> {}, flags {}\n", row.name, fmt::join(argument_kinds(row), ", "),
                  kind_text(row.entry->signature->result), row.entry->flags);
  if (!row.context.empty()) text += fmt::format("  reads {}\n", fmt::join(row.context, ", "));
  if (row.unit_rule() != nullptr) text += fmt::format("  unit rule {}\n", rule_text(row));
  return text + fmt::format("  from {}\n", row.pack->path());
}

std::string functions_json(const Machine& machine) {
  const std::vector<ReferenceEntry> reference = whole_reference(machine);
  std::string text;
  for (const auto& pack : machine.packs)
    for (const Row& row : pack->rows()) {
      const char* const rule = row.unit_rule();
      const ReferenceEntry* const entry = find_entry(reference, row.name);
      const Json json = {{"name", row.name},
                         {"arguments", argument_kinds(row)},
                         {"result", kind_text(row.entry->signature->result)},
                         {"context", row.context},
                         {"flags", row.entry->flags},
                         {"rule", rule == nullptr ? Json(nullptr) : Json(rule)},
                         {"pack", pack->path()},
                         {"group", entry->group},
                         {"heading", entry->heading},
                         {"summary", entry->summary}};
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
