#include "host/packs/reference.hpp"

#include <algorithm>
#include <cctype>
#include <iterator>

#include "fmt/format.h"
#include "host/efiutils/system/files.hpp"
#include "host/text/text.hpp"

namespace worksheet {

namespace {

bool is_name_character(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// The names in a heading: those with parentheses behind them; its words if there are none.
std::vector<std::string> names_in(std::string_view heading) {
  std::vector<std::string> called, words;
  for (std::size_t at = 0; at < heading.size(); ++at) {
    std::size_t end = at;
    while (end < heading.size() && is_name_character(heading[end])) ++end;
    const std::string name(heading.substr(at, end - at));
    if (!name.empty() && heading.substr(end).starts_with('('))
      called.push_back(name);
    else if (name.size() > 1)
      words.push_back(name);
    at = std::max(at, end);
  }
  return called.empty() ? words : called;
}

// The first sentence of the first paragraph.
std::string first_sentence(std::string_view markdown) {
  std::string paragraph;
  while (!markdown.empty()) {
    const std::string_view line = trimmed(take_line(markdown));
    if (line.empty() && !paragraph.empty()) break;
    if (!line.empty()) paragraph.append(paragraph.empty() ? "" : " ").append(line);
  }
  return plain_text(paragraph.substr(0, paragraph.find(". ")));
}

const char* kind_text(ArgumentKind kind) {
  constexpr const char* kTexts[] = {"any", "number", "matrix"};
  return kTexts[static_cast<int>(kind)];
}

}  // namespace

bool names(const ReferenceEntry& entry, const std::string& name) {
  if (std::find(entry.names.begin(), entry.names.end(), name) != entry.names.end()) return true;
  return !name.empty() && entry.heading.starts_with(name + " (");
}

std::string plain_text(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '`' || text.substr(at).starts_with("**")) {
      at += text[at] == '*' ? 1 : 0;
      continue;
    }
    // [text](target)
    const std::size_t middle = text[at] == '[' ? text.find("](", at) : std::string_view::npos;
    const std::size_t end = text.find(')', std::min(middle, text.size()));
    if (end != std::string_view::npos) {
      result += plain_text(text.substr(at + 1, middle - at - 1));
      at = end;
    } else {
      result += text[at];
    }
  }
  return result;
}

const ReferenceEntry* find_entry(const std::vector<ReferenceEntry>& entries,
                                 const std::string& name) {
  for (const ReferenceEntry& entry : entries)
    if (names(entry, name)) return &entry;
  return nullptr;
}

std::vector<ReferenceEntry> read_reference(std::string_view markdown) {
  std::vector<ReferenceEntry> entries;
  std::string group;
  bool inside = false;
  bool example = false;
  while (!markdown.empty()) {
    const std::string_view line = take_line(markdown);
    if (line.starts_with("```")) example = !example;
    if (!example && line.starts_with("## ")) {
      group = line.substr(3);
      inside = false;
    } else if (!example && line.starts_with("### ")) {
      const std::string heading(line.substr(4));
      entries.push_back({group, heading, names_in(heading), "", ""});
      inside = true;
    } else if (inside) {
      entries.back().text.append(line).append("\n");
    }
  }
  for (ReferenceEntry& entry : entries) entry.summary = first_sentence(entry.text);
  return entries;
}

std::vector<ReferenceEntry> pack_reference(const Pack& pack) {
  std::vector<ReferenceEntry> entries =
      read_reference(efi::read_file(pack.reference_path()).value_or(""));
  for (const Row& row : pack.rows()) {
    if (find_entry(entries, row.name) != nullptr) continue;
    const std::string kinds = fmt::format("{}({})", row.name, joined(argument_kinds(row), ", "));
    entries.push_back({pack.path(), kinds, {row.name}, "", "The pack says nothing about it.\n"});
  }
  return entries;
}

std::vector<std::string> argument_kinds(const Row& row) {
  std::vector<std::string> kinds;
  for (std::size_t k = 0; k < row.argument_count; ++k)
    kinds.emplace_back(kind_text(row.entry->signature->arguments[k]));
  return kinds;
}

const char* result_kind(const Row& row) {
  return kind_text(row.entry->signature->result);
}

}  // namespace worksheet
