#include "host/worksheet/help/help.hpp"

#include "fmt/format.h"
#include "host/text/text.hpp"
#include "host/units/unit_database.hpp"
#include "host/units/unit_list.hpp"
#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

namespace {

// The function that the worksheet defines by that name; null if there is none.
const Function* defined_function(const Machine& machine, const std::string& name) {
  const Variable* const variable = machine.find_variable(name);
  const bool found = variable != nullptr && has_kind(variable->value, kFunctionKind);
  return found ? &function_of(variable->value) : nullptr;
}

// All units, and where they come from.
std::string units_text() try {
  const UnitDatabase& database = unit_database();
  return fmt::format(
      "\nThe units of the SI are those of UDUNITS-2 ({}); all others are defined in {}.\n\n{}",
      database.udunits, database.file, unit_list(false));
} catch (const std::runtime_error& error) {
  return fmt::format("\n{}\n", error.what());
}

}  // namespace

std::optional<std::string> help_topic(std::string_view statement) {
  constexpr std::string_view kHelp = "help";
  if (statement.starts_with('?')) return std::string(trimmed(statement.substr(1)));
  if (!statement.starts_with(kHelp)) return std::nullopt;
  const std::string_view topic = trimmed(statement.substr(kHelp.size()));
  const bool apart = topic.empty() || topic.data() > statement.data() + kHelp.size();
  if (!apart || topic.starts_with('=') || topic.starts_with('(')) return std::nullopt;
  return std::string(topic.substr(0, topic.find('(')));
}

std::optional<HelpPage> help_page(const Machine& machine, const std::string& topic) {
  HelpPage page;
  const Function* const function = defined_function(machine, topic);
  if (function != nullptr) {
    page.kind = HelpPage::Kind::function;
    page.definition = function->source->text;
    page.where = function->source->line_words(function->source->line);
    return page;
  }
  page.entries = whole_reference(machine);
  if (topic.empty()) return page;
  std::erase_if(page.entries, [&](const ReferenceEntry& entry) { return !names(entry, topic); });
  if (page.entries.empty()) return std::nullopt;
  page.kind = HelpPage::Kind::entry;
  if (topic == "units") page.entries[0].text += units_text();
  for (const std::string& name : page.entries[0].names)
    if (const Row* row = machine.find_row(name)) page.rows.push_back(row);
  return page;
}

}  // namespace worksheet
