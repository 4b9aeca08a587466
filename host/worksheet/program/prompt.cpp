#include "host/worksheet/program/prompt.hpp"

#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "host/worksheet/language/statement_reader.hpp"
#include "host/worksheet/program/system/line_editor.hpp"

namespace worksheet {

namespace {

constexpr const char* kPrompt = "> ";
constexpr const char* kContinuation = ". ";

// Whether the statement is the wish to leave, and no variable's name.
bool leaves(const Source& source, const Machine& machine) {
  return (source.text == "quit" || source.text == "exit") &&
         machine.find_variable(source.text) == nullptr;
}

// Takes what was typed, which the history gives back with all of its lines; `before` is what was
// typed of the statement. False to leave.
bool take_lines(Session& session, StatementReader& reader, LineEditor& editor, std::string& before,
                std::string_view typed) {
  std::vector<Source> statements;
  while (true) {
    const std::size_t end = typed.find('\n');
    before.append(typed.substr(0, end)).append("\n");
    for (Source& source : reader.add_line(typed.substr(0, end)))
      statements.push_back(std::move(source));
    if (end == std::string_view::npos) break;
    typed.remove_prefix(end + 1);
  }
  const bool is_last = !statements.empty() && leaves(statements.back(), session.machine());
  if (!reader.pending() && !is_last) {
    editor.remember(before.substr(0, before.size() - 1));
    before.clear();
  }
  for (const Source& source : statements) {
    if (leaves(source, session.machine())) return false;
    session.run(source);
  }
  // Pressed behind a line that has to go on, Ctrl-C gives up the next one.
  if (!statements.empty()) session.machine().interrupted = Machine::kGoOn;
  return true;
}

}  // namespace

void run_prompt(Session& session) {
  LineEditor editor(session.machine());
  std::cout << "worksheet: help lists what there is, help NAME or ?NAME says more, quit leaves"
            << std::endl;
  StatementReader reader;
  std::string before;
  while (const auto line = editor.next_line(reader.pending() ? kContinuation : kPrompt, before)) {
    if (line->given_up) {
      std::cout << std::endl;
      reader = StatementReader(reader.next_line());
      before.clear();
    } else if (!take_lines(session, reader, editor, before, line->text)) {
      return;
    }
  }
  for (const Source& source : reader.finish()) session.run(source);
  std::cout << std::endl;
}

}  // namespace worksheet
