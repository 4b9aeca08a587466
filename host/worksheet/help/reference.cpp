#include "host/worksheet/help/reference.hpp"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fmt/format.h"
#include "host/worksheet/data/data_file.hpp"
#include "host/worksheet/help/listing.hpp"

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

std::string_view taken_line(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

// Text without the marks of Markdown.
std::string plain(std::string_view text) {
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
      result += plain(text.substr(at + 1, middle - at - 1));
      at = end;
    } else {
      result += text[at];
    }
  }
  return result;
}

// Adds words to lines of `width` characters; all lines but the first begin with `indent` blanks.
void wrap(std::string& text, std::string_view words, std::size_t width, std::size_t indent) {
  std::size_t column = character_count(std::string_view(text).substr(text.rfind('\n') + 1));
  bool begun = false;
  for (words = trimmed(words); !words.empty(); words = trimmed(words)) {
    const std::string_view word = words.substr(0, words.find(' '));
    words.remove_prefix(word.size());
    const std::size_t length = character_count(word);
    if (begun && column + 1 + length > width) {
      text.append("\n").append(indent, ' ');
      column = indent;
      begun = false;
    }
    if (begun) text += ' ';
    column += length + (begun ? 1 : 0);
    text += word;
    begun = true;
  }
  text += '\n';
}

// Markdown as plain text. Paragraphs and points are wrapped; examples and tables stay as they are.
std::string rendered(std::string_view markdown, std::size_t width) {
  std::string result, paragraph;
  auto flush = [&] {
    const bool point = paragraph.starts_with("- ");
    if (!paragraph.empty()) wrap(result, plain(paragraph), width, point ? 2 : 0);
    paragraph.clear();
  };
  bool example = false;
  while (!markdown.empty()) {
    const std::string_view line = taken_line(markdown);
    if (line.starts_with("```")) {
      flush();
      example = !example;
    } else if (example || line.starts_with('|')) {
      flush();
      if (line.find_first_not_of("|-: ") != std::string_view::npos)
        result += fmt::format("    {}\n", example ? std::string(line) : plain(line));
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

// The first sentence of the first paragraph.
std::string first_sentence(std::string_view markdown) {
  std::string paragraph;
  while (!markdown.empty()) {
    const std::string_view line = trimmed(taken_line(markdown));
    if (line.empty() && !paragraph.empty()) break;
    if (!line.empty()) paragraph.append(paragraph.empty() ? "" : " ").append(line);
  }
  return plain(paragraph.substr(0, paragraph.find(". ")));
}

std::string content_of(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool names(const ReferenceEntry& entry, const std::string& name) {
  return std::find(entry.names.begin(), entry.names.end(), name) != entry.names.end();
}

// The entries of one pack; those of its reference that it has no function for are about operators.
std::vector<ReferenceEntry> pack_reference(const Pack& pack) {
  std::vector<ReferenceEntry> entries = read_reference(content_of(pack.reference_path()));
  for (const Row& row : pack.rows()) {
    if (find_entry(entries, row.name) != nullptr) continue;
    const std::string kinds = fmt::format("{}({})", row.name, fmt::join(argument_kinds(row), ", "));
    entries.push_back({pack.path(), kinds, {row.name}, "", "The pack says nothing about it.\n"});
  }
  return entries;
}

// The rows' context, units and flags, for those who want to know it exactly.
std::string rows_text(const Machine& machine, const ReferenceEntry& entry) {
  std::string text;
  for (const std::string& name : entry.names)
    if (const Row* row = machine.find_row(name)) text += row_text(*row);
  return text;
}

// The groups with the names in them.
std::string overview(const std::vector<ReferenceEntry>& entries, std::size_t width) {
  constexpr std::size_t kNames = 40;
  std::string text, group;
  std::vector<std::string> listed;
  auto flush = [&] {
    if (listed.empty()) return;
    text += group + std::string(kNames - std::min(kNames - 2, character_count(group)), ' ');
    wrap(text, fmt::format("{}", fmt::join(listed, " ")), width, kNames);
    listed.clear();
  };
  for (const ReferenceEntry& entry : entries) {
    if (entry.group != group) flush();
    group = entry.group;
    listed.insert(listed.end(), entry.names.begin(), entry.names.end());
  }
  flush();
  return text + "\nhelp NAME says more.\n";
}

// What a name of the worksheet stands for; empty if there is no such name.
std::string worksheet_name_text(const Machine& machine, const std::string& name) {
  const auto found = machine.variables().find(name);
  if (found == machine.variables().end() || !found->second->defined) return {};
  const Value& value = found->second->value;
  if (!has_kind(value, kFunctionKind)) return {};
  const Source& source = *function_of(value).source;
  return fmt::format("{}\n\nDefined in line {}.\n", source.text, source.line);
}

}  // namespace

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
    const std::string_view line = taken_line(markdown);
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

std::vector<ReferenceEntry> whole_reference(const Machine& machine) {
  std::vector<ReferenceEntry> entries;
  auto add = [&](std::vector<ReferenceEntry> more) {
    std::move(more.begin(), more.end(), std::back_inserter(entries));
  };
  for (const auto& pack : machine.packs) add(pack_reference(*pack));
  add(read_reference(kLanguageReference));
  return entries;
}

std::optional<std::string> help_topic(std::string_view statement, const Machine& machine) {
  constexpr std::string_view kHelp = "help";
  const auto variable = machine.variables().find(std::string(kHelp));
  const bool taken = variable != machine.variables().end() && variable->second->defined;
  if (taken || !statement.starts_with(kHelp)) return std::nullopt;
  const std::string_view topic = trimmed(statement.substr(kHelp.size()));
  const bool apart = topic.empty() || topic.data() > statement.data() + kHelp.size();
  if (!apart || topic.starts_with('=') || topic.starts_with('(')) return std::nullopt;
  return std::string(topic.substr(0, topic.find('(')));
}

std::string help_text(const Machine& machine, const std::string& topic, int width) {
  const std::vector<ReferenceEntry> entries = whole_reference(machine);
  const auto columns = static_cast<std::size_t>(width);
  if (topic.empty()) return overview(entries, columns);
  if (std::string text = worksheet_name_text(machine, topic); !text.empty()) return text;
  const ReferenceEntry* const entry = find_entry(entries, topic);
  if (entry == nullptr) return {};
  return fmt::format("{}\n\n{}{}", entry->heading, rendered(entry->text, columns),
                     rows_text(machine, *entry));
}

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

}  // namespace worksheet
