#include "host/worksheet/output/help_text.hpp"

#include <algorithm>

#include "fmt/format.h"
#include "host/text/text.hpp"

namespace worksheet {

namespace {

// Markdown as plain text, laid out in lines. Paragraphs and points are wrapped; examples and tables
// stay as they are. No table begins within a paragraph: there a bar is an absolute value.
std::string laid_out(std::string_view markdown, std::size_t width) {
  std::string result, paragraph;
  auto flush = [&] {
    const bool point = paragraph.starts_with("- ");
    if (!paragraph.empty()) wrap(result, plain_text(paragraph), width, point ? 2 : 0);
    paragraph.clear();
  };
  bool example = false;
  while (!markdown.empty()) {
    const std::string_view line = take_line(markdown);
    if (line.starts_with("```")) {
      flush();
      example = !example;
    } else if (example || (line.starts_with('|') && paragraph.empty())) {
      flush();
      if (line.find_first_not_of("|-: ") != std::string_view::npos)
        result += fmt::format("    {}\n", example ? std::string(line) : plain_text(line));
    } else if (line.empty()) {
      flush();
      if (!result.ends_with("\n\n")) result += '\n';
    } else {
      if (line.starts_with("- ")) flush();
      paragraph.append(paragraph.empty() ? "" : " ").append(trimmed(line));
    }
  }
  flush();
  result.erase(result.find_last_not_of('\n') + 1);
  result.erase(0, std::min(result.find_first_not_of('\n'), result.size()));
  return result + '\n';
}

// The names of an entry as they are written in worksheets: of "A' (transpose)" the operator.
std::vector<std::string> written_names(const ReferenceEntry& entry) {
  const std::size_t behind = entry.heading.find(" (");
  if (behind != std::string::npos) return {entry.heading.substr(0, behind)};
  std::vector<std::string> names;
  for (const std::string& name : entry.names)
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  return names;
}

// The groups with the names in them.
std::string overview(const std::vector<ReferenceEntry>& entries, std::size_t width) {
  constexpr std::size_t kNames = 40;
  std::string text, group;
  std::vector<std::string> listed;
  auto flush = [&] {
    if (listed.empty()) return;
    text += group + std::string(kNames - std::min(kNames - 2, character_count(group)), ' ');
    wrap(text, joined(listed, " "), width, kNames);
    listed.clear();
  };
  for (const ReferenceEntry& entry : entries) {
    if (entry.group != group) flush();
    group = entry.group;
    for (std::string& name : written_names(entry)) listed.push_back(std::move(name));
  }
  flush();
  return text + "\nhelp NAME says more.\n";
}

// A row as the pack's table has it, for those who want to know it exactly.
std::string row_text(const Row& row) {
  std::string text =
      fmt::format("\n{}: {} -> {}, flags {}\n", row.name, joined(argument_kinds(row), ", "),
                  result_kind(row), row.entry->flags);
  if (!row.context.empty()) text += fmt::format("  reads {}\n", joined(row.context, ", "));
  if (row.unit_rule() != nullptr) text += fmt::format("  unit rule {}\n", trimmed(row.unit_rule()));
  return text + fmt::format("  from {}\n", row.pack->path());
}

}  // namespace

std::string help_text(const HelpPage& page, int width) {
  const auto columns = static_cast<std::size_t>(width);
  switch (page.kind) {
    case HelpPage::Kind::overview:
      return overview(page.entries, columns);
    case HelpPage::Kind::function:
      return fmt::format("{}\n\nDefined in {}.\n", page.definition, page.where);
    default:
      break;
  }
  std::string text;
  for (const ReferenceEntry& entry : page.entries)
    text += fmt::format("{}{}\n\n{}", text.empty() ? "" : "\n", entry.heading,
                        laid_out(entry.text, columns));
  for (const Row* row : page.rows) text += row_text(*row);
  return text;
}

}  // namespace worksheet
