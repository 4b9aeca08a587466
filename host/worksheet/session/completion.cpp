#include "host/worksheet/session/completion.hpp"

#include <algorithm>
#include <filesystem>
#include <set>

#include "host/efiutils/system/paths.hpp"
#include "host/units/unit_database.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/functions/builtin.hpp"
#include "host/worksheet/help/help.hpp"
#include "host/worksheet/language/words.hpp"
#include "host/worksheet/session/commands.hpp"

namespace worksheet {

namespace {

namespace fs = std::filesystem;

// More are of no use to anybody, and a directory may hold very many.
constexpr std::size_t kMostFiles = 1000;

// Where the cursor stands, and where the word there begins.
struct Cursor {
  enum class In { names, unit, text, comment };
  In in = In::names;
  std::size_t begin = 0;
};

bool ends_word(char c, Cursor::In in) {
  if (in == Cursor::In::text) return false;
  const std::string_view marks =
      in == Cursor::In::unit ? " */^()." : " \t\n+-*/\\^<>=!,;:()[]{}'&|?.";
  return marks.find(c) != std::string_view::npos;
}

Cursor cursor_in(std::string_view text) {
  using In = Cursor::In;
  Cursor cursor;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '\n') {  // Nothing of that kind goes beyond its line.
      cursor = {In::names, at + 1};
    } else if (cursor.in == In::text && c == '\\') {
      ++at;
    } else if (cursor.in == In::names && (c == '"' || c == '{' || c == '#')) {
      cursor = {c == '"' ? In::text : c == '{' ? In::unit : In::comment, at + 1};
    } else if ((cursor.in == In::text && c == '"') || (cursor.in == In::unit && c == '}')) {
      cursor = {In::names, at + 1};
    } else if (ends_word(c, cursor.in)) {
      cursor.begin = at + 1;
    }
  }
  return cursor;
}

void take(std::set<std::string>& found, std::string_view word, std::string name) {
  if (name.starts_with(word)) found.insert(std::move(name));
}

void take_units(std::set<std::string>& found, std::string_view word) try {
  for (const UnitEntry& entry : unit_database().entries) {
    for (const auto* words : {&entry.symbols, &entry.names, &entry.plurals})
      for (const std::string& name : *words) take(found, word, name);
    if (word.empty()) continue;
    for (const UnitPrefix& prefix : kUnitPrefixes) {
      const auto& taken = entry.prefixes;
      if (!entry.takes_all && std::find(taken.begin(), taken.end(), prefix.symbol) == taken.end())
        continue;
      for (const std::string& symbol : entry.symbols) take(found, word, prefix.symbol + symbol);
      for (const std::string& name : entry.names) take(found, word, prefix.name + name);
    }
  }
} catch (const std::runtime_error&) {
  // Without a database there is nothing to offer.
}

// Files and, with a slash behind them, directories. Those outside of where the worksheet is
// confined to could not be opened, and are not told.
void take_files(std::set<std::string>& found, std::string_view word, const SheetFiles& files) {
  const std::size_t slash = word.rfind('/');
  const std::string folder(word.substr(0, slash == std::string_view::npos ? 0 : slash + 1));
  if (!files.may_list(folder)) return;
  std::error_code failed;
  fs::directory_iterator entry(efi::path_of(files.path(folder.empty() ? "." : folder)), failed);
  for (; !failed && entry != fs::directory_iterator() && found.size() < kMostFiles;
       entry.increment(failed)) {
    const std::string name = efi::utf8_of(entry->path().filename());
    if (name.starts_with('.') && word.size() == folder.size()) continue;
    std::error_code ignored;
    take(found, word, folder + name + (entry->is_directory(ignored) ? "/" : ""));
  }
}

void take_names(std::set<std::string>& found, std::string_view word, const Machine& machine) {
  for (std::string& name : builtin_names()) take(found, word, std::move(name));
  for (const char* name : kCommandWords) take(found, word, name);
  for (const std::string_view name : kKeywords) take(found, word, std::string(name));
  for (const auto& pack : machine.packs)
    for (const Row& row : pack->rows()) take(found, word, row.name);
  for (const auto& [name, variable] : machine.variables())
    if (variable->defined) take(found, word, name);
}

}  // namespace

Completion complete(const Machine& machine, std::string_view text) {
  const Cursor cursor = cursor_in(text);
  const std::string_view word = text.substr(cursor.begin);
  std::set<std::string> found;
  if (cursor.in == Cursor::In::unit) take_units(found, word);
  if (cursor.in == Cursor::In::text) take_files(found, word, machine.files);
  if (cursor.in == Cursor::In::names) take_names(found, word, machine);
  // What help knows beside functions: operators, units...
  if (help_topic(text))
    for (const ReferenceEntry& entry : whole_reference(machine))
      for (const std::string& name : entry.names) take(found, word, name);
  return {cursor.begin, {found.begin(), found.end()}};
}

}  // namespace worksheet
