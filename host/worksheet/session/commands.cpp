#include "host/worksheet/session/commands.hpp"

#include <algorithm>
#include <cctype>

#include "host/text/number_format.hpp"
#include "host/text/text.hpp"

namespace worksheet {

namespace {

bool is_name(std::string_view word) {
  auto is_letter = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || (c & 0x80) != 0;
  };
  return !word.empty() && std::isdigit(static_cast<unsigned char>(word[0])) == 0 &&
         std::all_of(word.begin(), word.end(), is_letter);
}

// The text between the quotation marks, if that is all there is.
std::optional<std::string> file_name(std::string_view quoted) {
  if (quoted.size() < 3 || quoted.front() != '"' || quoted.back() != '"') return std::nullopt;
  const std::string_view name = quoted.substr(1, quoted.size() - 2);
  if (name.find_first_of("\"\\\n") != std::string_view::npos) return std::nullopt;
  return std::string(name);
}

// Whether packs read the variable.
bool is_context(const Machine& machine, const std::string& name) {
  if (name == ORIGIN_sUnIdent->name->text) return true;
  for (const auto& pack : machine.packs)
    for (const Row& row : pack->rows())
      if (std::find(row.context.begin(), row.context.end(), name) != row.context.end()) return true;
  return false;
}

}  // namespace

std::optional<Command> command_in(std::string_view statement, const Machine& machine) {
  statement = trimmed(statement);
  const bool is_quiet = statement.ends_with(';');
  if (is_quiet) statement = trimmed(statement.substr(0, statement.size() - 1));
  const std::string word(statement.substr(0, statement.find_first_of(" \t\"")));
  const auto known = std::find(std::begin(kCommandWords), std::end(kCommandWords), word);
  if (known == std::end(kCommandWords) || machine.find_variable(word) != nullptr)
    return std::nullopt;
  Command command;
  command.is_quiet = is_quiet;
  command.kind = static_cast<Command::Kind>(known - std::begin(kCommandWords));
  const std::string_view rest = trimmed(statement.substr(word.size()));
  if (command.kind == Command::Kind::format) {
    const auto words = format_statement(statement);
    if (!words) return std::nullopt;
    command.format = *words;
    return command;
  }
  if (command.kind == Command::Kind::include) {
    const auto file = file_name(rest);
    if (!file) return std::nullopt;
    command.file = *file;
    return command;
  }
  for (const std::string_view name : words_of(rest)) command.names.emplace_back(name);
  const bool fits = command.kind == Command::Kind::who
                        ? rest.empty()
                        : std::all_of(command.names.begin(), command.names.end(), is_name);
  return fits ? std::optional(command) : std::nullopt;
}

std::vector<const Variable*> variable_list(const Machine& machine) {
  std::vector<const Variable*> list;
  for (const auto& [name, variable] : machine.variables())
    if (variable->defined) list.push_back(variable.get());
  std::sort(list.begin(), list.end(),
            [](const Variable* a, const Variable* b) { return a->name < b->name; });
  return list;
}

std::string clear_variables(Machine& machine, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (machine.find_variable(name) == nullptr) return "there is no variable " + name;
    if (is_context(machine, name)) return name + " cannot be cleared: functions read it";
  }
  for (const Variable* variable : variable_list(machine)) {
    const bool named =
        names.empty() || std::find(names.begin(), names.end(), variable->name) != names.end();
    if (named && !is_context(machine, variable->name))
      machine.forget(*machine.variable(variable->name));
  }
  return {};
}

}  // namespace worksheet
