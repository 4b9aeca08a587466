#include "host/worksheet/output/listing.hpp"

#include <algorithm>
#include <filesystem>

#include "fmt/format.h"
#include "host/efiutils/catalogue.hpp"
#include "host/efiutils/system/paths.hpp"
#include "host/text/text.hpp"
#include "host/units/unit.hpp"

namespace worksheet {

std::string reference_list(const std::vector<ReferenceEntry>& entries, int width) {
  constexpr std::size_t kSummaries = 38;
  std::string text, group;
  for (const ReferenceEntry& entry : entries) {
    if (entry.group != group) text += fmt::format("{}{}\n", text.empty() ? "" : "\n", entry.group);
    group = entry.group;
    text += "  " + entry.heading;
    const std::size_t column = 2 + character_count(entry.heading);
    if (column + 2 <= kSummaries)
      text.append(kSummaries - column, ' ');
    else if (!entry.summary.empty())
      text.append("\n").append(kSummaries, ' ');
    wrap(text, entry.summary, static_cast<std::size_t>(width), kSummaries);
  }
  return text;
}

std::string kind_words(const Value& value) {
  if (is_number(value)) return "number";
  if (is_text(value)) return "text";
  if (is_matrix(value))
    return fmt::format("{} x {} {}", matrix(value)->rows, matrix(value)->cols,
                       contains_ptrs(matrix(value)) ? "nested array" : "matrix");
  return has_kind(value, kFunctionKind) ? signature_text(function_of(value)) : "no value";
}

std::string variables_text(std::span<const Variable* const> variables) {
  std::size_t width = 0;
  for (const Variable* variable : variables)
    width = std::max(width, character_count(variable->name));
  std::string text;
  for (const Variable* variable : variables) {
    const Value& value = variable->value;
    text += fmt::format(
        "{}{}  {}{}\n", variable->name, std::string(width - character_count(variable->name), ' '),
        kind_words(value), value.unit == nullptr ? "" : " in " + value.unit->name());
  }
  return text;
}

std::string packs_text() {
  std::string text;
  std::error_code ignored;
  for (const efi::CatalogueEntry& entry : efi::read_catalogue())
    text += fmt::format(
        "{}  {}{}\n", entry.id, entry.path,
        std::filesystem::exists(efi::path_of(entry.path), ignored) ? "" : "  (the file has gone)");
  return text;
}

}  // namespace worksheet
