#include "host/worksheet/program/word_list.hpp"

#include <set>

#include "host/worksheet/functions/builtin.hpp"
#include "host/worksheet/language/words.hpp"
#include "host/worksheet/session/commands.hpp"

namespace worksheet {

std::string word_list(const Machine& machine) {
  std::set<std::string> lines;
  for (const std::string_view word : kKeywords)
    if (word != "help") lines.insert("keyword " + std::string(word));
  for (const char* word : kCommandWords) lines.insert(std::string("command ") + word);
  lines.insert("command help");
  for (const std::string& name : builtin_names()) {
    if (lines.count("keyword " + name) != 0) continue;
    lines.insert((find_constant(name) != nullptr ? "constant " : "function ") + name);
  }
  lines.insert(std::string("variable ") + kAnswer);
  for (const auto& pack : machine.packs)
    for (const Row& row : pack->rows()) {
      lines.insert("function " + row.name);
      for (const std::string& name : row.context) lines.insert("variable " + name);
    }
  std::string text;
  for (const std::string& line : lines) text.append(line).append("\n");
  return text;
}

}  // namespace worksheet
