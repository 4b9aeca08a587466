#include "host/worksheet/output/listing.hpp"

#include <filesystem>

#include "fmt/format.h"
#include "host/efiutils/catalogue.hpp"
#include "host/text/text.hpp"

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

std::string packs_text() {
  std::string text;
  std::error_code ignored;
  for (const efi::CatalogueEntry& entry : efi::read_catalogue())
    text +=
        fmt::format("{}  {}{}\n", entry.id, entry.path,
                    std::filesystem::exists(entry.path, ignored) ? "" : "  (the file has gone)");
  return text;
}

}  // namespace worksheet
