// The list read by libraries: expat for its file, UDUNITS-2 for the definitions.
#include <expat.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string_view>

#include "host/efiutils/system/files.hpp"
#include "host/efiutils/system/platform.hpp"
#include "host/text/text.hpp"
#include "host/units/unit_database.hpp"
#include "host/units/unit_definitions.hpp"

namespace worksheet {

namespace {

[[noreturn]] void fail(const std::string& what) {
  throw std::runtime_error("the units cannot be read: " + what);
}

std::string plural_of(const std::string& name) {
  const auto ends = [&](const char* end) { return name.ends_with(end); };
  if (ends("s") || ends("x") || ends("z") || ends("ch")) return name + "es";
  return name + "s";
}

// Follows the parser through the file.
class DatabaseReader {
 public:
  void begin(std::string_view element, const char** attributes) {
    text_.clear();
    if (element == "unit") {
      entry_ = UnitEntry();
      entry_.kind = kind_;
      definition_.clear();
      for (; *attributes != nullptr; attributes += 2) set(attributes[0], attributes[1]);
    } else if (element == "name") {
      name_.clear();
      plural_.clear();
    }
  }

  void end(std::string_view element) {
    if (element == "def") definition_ = text_;
    if (element == "symbol") entry_.symbols.push_back(text_);
    if (element == "singular") plural_ = plural_of(name_ = text_);
    if (element == "plural") plural_ = text_;
    if (element == "noplural") plural_ = name_;
    if (element == "name") {
      entry_.names.push_back(name_);
      entry_.plurals.push_back(plural_);
    }
    if (element == "unit") finish();
  }

  void heading(std::string_view target, const char* text) {
    if (target == "kind") kind_ = text;
  }

  void add_text(std::string_view text) { text_ += text; }

  // Why the file is none; empty if nothing is wrong.
  const std::string& fault() const { return fault_; }
  std::vector<UnitEntry> take() { return std::move(entries_); }

 private:
  void set(std::string_view attribute, const std::string& value) {
    if (attribute == "turns") entry_.turns = value == "1" ? 1 : 0;
    if (attribute != "prefixes") return;
    entry_.takes_all = value == "all";
    for (const std::string_view prefix : words_of(value)) entry_.prefixes.emplace_back(prefix);
  }

  void finish() {
    std::vector<std::string> names = entry_.names;
    names.insert(names.end(), entry_.plurals.begin(), entry_.plurals.end());
    const auto meaning = definitions_.add(definition_, names, entry_.symbols);
    if (!meaning) {
      if (fault_.empty()) fault_ = "a definition is wrong: " + definition_;
      return;
    }
    entry_.scale = meaning->scale;
    entry_.dimension = meaning->dimension;
    entry_.proportional = meaning->proportional;
    entries_.push_back(std::move(entry_));
  }

  UnitDefinitions definitions_;
  std::vector<UnitEntry> entries_;
  UnitEntry entry_;
  std::string kind_, definition_, name_, plural_, text_, fault_;
};

DatabaseReader& reader_of(void* data) {
  return *static_cast<DatabaseReader*>(data);
}

std::vector<UnitEntry> read_entries(const std::string& xml) {
  DatabaseReader reader;
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
      XML_ParserCreate(nullptr), XML_ParserFree);
  if (parser == nullptr) throw std::bad_alloc();
  XML_SetUserData(parser.get(), &reader);
  XML_SetElementHandler(
      parser.get(),
      [](void* data, const char* name, const char** attributes) {
        reader_of(data).begin(name, attributes);
      },
      [](void* data, const char* name) { reader_of(data).end(name); });
  XML_SetCharacterDataHandler(parser.get(), [](void* data, const char* text, int length) {
    reader_of(data).add_text({text, static_cast<std::size_t>(length)});
  });
  XML_SetProcessingInstructionHandler(parser.get(),
                                      [](void* data, const char* target, const char* text) {
                                        reader_of(data).heading(target, text);
                                      });
  if (XML_Parse(parser.get(), xml.data(), static_cast<int>(xml.size()), 1) != XML_STATUS_OK)
    fail(XML_ErrorString(XML_GetErrorCode(parser.get())));
  if (!reader.fault().empty()) fail(reader.fault());
  return reader.take();
}

std::string database_file() {
  namespace fs = std::filesystem;
  std::error_code failed;
  for (fs::path directory = efi::program_path(); directory.has_relative_path();) {
    directory = directory.parent_path();
    const fs::path file = directory / WORKSHEET_UNITS;
    if (fs::exists(file, failed)) return file.string();
  }
  fail("there is no " WORKSHEET_UNITS " above the program");
}

UnitDatabase read_database() {
  UnitDatabase database = {database_file(), UnitDefinitions::path(), {}};
  const auto xml = efi::read_file(database.file);
  if (!xml) fail(database.file);
  database.entries = read_entries(*xml);
  return database;
}

}  // namespace

const UnitDatabase& unit_database() {
  static const UnitDatabase database = read_database();
  return database;
}

}  // namespace worksheet
