#include "host/worksheet/session/session.hpp"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <istream>
#include <new>
#include <sstream>
#include <utility>

#include "fmt/format.h"
#include "host/efiutils/system/paths.hpp"
#include "host/text/utf8.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/readable.hpp"
#include "host/worksheet/language/compile.hpp"
#include "host/worksheet/language/parse.hpp"
#include "host/worksheet/language/statement_reader.hpp"
#include "host/worksheet/operators/assignment.hpp"
#include "host/worksheet/session/commands.hpp"
#include "host/worksheet/session/interruption.hpp"
#include "host/worksheet/session/memory_reserve.hpp"
#include "host/worksheet/session/progress.hpp"

namespace worksheet {

namespace {

// A statement that takes longer shows that it is at work.
constexpr std::chrono::seconds kPatience(2);

constexpr const char* kNoHelp = "there is no help on that; help alone lists everything";

Value define(Machine& machine, Statement& statement) {
  const Function* const function = machine.keep(std::move(statement.function));
  efi::aFunction* const made = machine.store.new_function(const_cast<Function*>(function));
  if (made == nullptr) return object_value(sError_OutOfMemory);
  if (const char* reason = assignment_objection(*statement.targets[0], object_value(made)))
    return machine.fail({}, reason);
  machine.assign(*statement.targets[0], object_value(made));
  return object_value(made);
}

Value evaluate(Machine& machine, const Statement& statement, const Source& source) {
  try {
    const Value value = machine.evaluate(*statement.expression, source);
    if (is_error(value)) return value;
    if (statement.form == Statement::Form::display) return readable(machine, value);
    if (statement.form == Statement::Form::block) return value;
    if (statement.form == Statement::Form::update)
      return readable(machine, machine.value_of(*statement.targets[0]));
    return readable(machine,
                    assign_targets(machine, statement.targets, value, statement.expression->span));
  } catch (const std::bad_alloc&) {
    return machine.out_of_memory(statement.expression->span);
  }
}

}  // namespace

// The value of the statement, or what is wrong with its form.
void Session::evaluate_into(Outcome& outcome, const Source& source) {
  try {
    Statement statement = compile(source, machine_);
    for (const Variable* target : statement.targets) outcome.names.push_back(target->name);
    outcome.is_quiet = statement.is_quiet || quiet_;
    outcome.is_definition = statement.form == Statement::Form::definition;
    outcome.value =
        outcome.is_definition ? define(machine_, statement) : evaluate(machine_, statement, source);
  } catch (const SyntaxError& error) {
    const Source::Position at = source.position(error.offset);
    outcome.line = at.line;
    outcome.column = at.column;
    outcome.offset = error.offset;
    outcome.syntax_message = error.what();
  }
}

// What comes of a statement "format": the format from now on.
Value Session::change_format(std::string_view words) {
  if (!words.empty()) {
    const auto format = parse_format(words);
    if (!format) return machine_.fail({}, kFormatWanted);
    format_ = format;
  }
  machine_.note("format " + format_words(format_.value_or(NumberFormat())));
  return object_value(&kNoValue);
}

// Does what a statement about the session asks for; false for any other.
bool Session::run_command(Outcome& outcome, const Source& source) {
  const auto command = command_in(source.text, machine_);
  if (!command) return false;
  outcome.value = object_value(&kNoValue);
  outcome.is_quiet = command->is_quiet || quiet_;
  outcome.is_done = command->kind != Command::Kind::format;  // Which says what it did.
  if (command->kind == Command::Kind::who) {
    outcome.variables = variable_list(machine_);
  } else if (command->kind == Command::Kind::clear) {
    const std::string wrong = clear_variables(machine_, command->names);
    if (!wrong.empty()) outcome.value = machine_.fail({}, wrong);
  } else if (command->kind == Command::Kind::format) {
    outcome.value = change_format(command->format);
    if (outcome.is_quiet) machine_.notes.clear();
  } else {
    outcome.value = begin_include(command->file);
    if (included_) included_->is_quiet = outcome.is_quiet;
  }
  return true;
}

// Reads the file, whose statements are run behind the one that includes it.
Value Session::begin_include(const std::string& file) {
  if (including_.empty()) count_ = 0;
  if (including_.size() == kIncludeDepthLimit.most)
    return machine_.fail({}, kIncludeDepthLimit.message);
  if (++count_ > kIncludeLimit.most) return machine_.fail({}, kIncludeLimit.message);
  const std::string path = machine_.files.path(file);
  if (std::find(including_.begin(), including_.end(), path) != including_.end())
    return machine_.fail({}, path + " includes itself");
  try {
    included_ = Included{path, machine_.files.read(file), false};
    return object_value(&kNoValue);
  } catch (const FileError& error) {
    return machine_.fail({}, error.what());
  }
}

void Session::run_included() {
  const Included file = *std::exchange(included_, std::nullopt);
  // Names in it lead from where it lies; behind it from where they did before.
  struct Inside {
    Session& session;
    std::string before = session.machine_.files.directory;
    bool was_quiet = session.quiet_;
    ~Inside() {
      session.quiet_ = was_quiet;
      session.machine_.files.directory = before;
      session.including_.pop_back();
    }
  } inside{*this};
  quiet_ = file.is_quiet;
  including_.push_back(file.path);
  const auto directory = efi::path_of(file.path).parent_path();
  machine_.files.directory = directory.empty() ? "." : efi::utf8_of(directory);
  std::istringstream text(file.text);
  run_text(text, 1, file.path);
}

// Keeps the value of an expression that is shown, unless it has a name already.
void Session::keep_answer(const Outcome& outcome, const Source& source) {
  const bool shows_value = outcome.names.empty() && !outcome.failed() && !is_none(outcome.value);
  if (shows_value && machine_.find_variable(source.text) == nullptr)
    machine_.assign(*machine_.variable(kAnswer), outcome.value);
}

// The same, or that there is no memory for it.
void Session::run_into(Outcome& outcome, const Source& source) {
  try {
    const bool readable = source.objection.empty();
    if (readable && run_command(outcome, source)) return;
    const auto topic = readable ? help_topic(source.text) : std::nullopt;
    if (!topic) {
      evaluate_into(outcome, source);
      return keep_answer(outcome, source);
    }
    outcome.help = help_page(machine_, *topic);
    outcome.value = outcome.help ? object_value(&kNoValue) : machine_.fail({}, kNoHelp);
  } catch (const std::bad_alloc&) {
    outcome.value = machine_.out_of_memory({});
  }
}

// What a failed statement should have defined has no value: those who use it are told why.
void Session::remember_failure(const Outcome& outcome) try {
  const Source& source = *outcome.source;
  if (!outcome.failed() || !source.objection.empty()) return;
  const bool is_here = outcome.is_place_known() && outcome.place.source == &source;
  const int line = is_here ? source.position(outcome.place.span.begin).line : outcome.line;
  const Failure itself = {line, source.line_words(line)};
  const Failure& failure = outcome.failed_line() != 0 ? outcome.place.cause : itself;
  for (const std::string& name : assigned_names(source)) {
    Variable* const variable = machine_.variable(name);
    if (!variable->defined) variable->failure = failure;
  }
} catch (const std::bad_alloc&) {
  // Then it is unknown to them.
}

Outcome Session::outcome_of(const Source& source) {
  const TimeLimit limit(machine_);
  const Progress progress(progress_, kPatience, source.text);
  const auto start = std::chrono::steady_clock::now();
  Outcome outcome;
  outcome.source = &source;
  outcome.line = source.line;
  outcome.store = &machine_.store;
  run_into(outcome, source);
  outcome.format = format_;
  outcome.place = machine_.place();
  remember_failure(outcome);
  outcome.pictures = std::move(machine_.pictures);
  machine_.pictures.clear();
  outcome.notes = std::move(machine_.notes);
  machine_.notes.clear();
  outcome.trust = machine_.trust.take();
  outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return outcome;
}

void Session::run(const Source& source) {
  keep_memory_reserve();
  Outcome outcome = outcome_of(source);
  try {
    show_(outcome);
  } catch (const std::bad_alloc&) {
    outcome.value = machine_.out_of_memory({});
    outcome.place = machine_.place();
    outcome.help.reset();
    show_(outcome);
  }
  failed_ = failed_ || outcome.failed();
  machine_.end_statement();
  if (included_) run_included();
}

namespace {

// Takes the next line; of one that is longer than a statement may be, the beginning. False at the
// end of the text, and after an interruption.
bool take_line(std::istream& text, std::string& line, const Machine& machine) {
  constexpr int kEnd = std::char_traits<char>::eof();
  line.clear();
  int c = text.rdbuf()->sbumpc();
  if (c == kEnd) return false;
  for (; c != kEnd && c != '\n' && !machine.interrupted; c = text.rdbuf()->sbumpc())
    if (line.size() <= kStatementLimit.most) line += static_cast<char>(c);
  return !machine.interrupted;
}

}  // namespace

void Session::run_all(std::vector<Source> sources, const std::string& origin) {
  for (Source& source : sources) {
    source.origin = origin;
    if (!machine_.interrupted) run(source);
  }
}

void Session::run_text(std::istream& text, int first_line, const std::string& origin) {
  StatementReader reader(first_line);
  bool at_start = true;
  for (std::string line; take_line(text, line, machine_); at_start = false) {
    if (at_start && line.starts_with(kByteOrderMark)) line.erase(0, kByteOrderMark.size());
    run_all(reader.add_line(line), origin);
  }
  if (machine_.interrupted) return;
  run_all(reader.finish(), origin);
}

}  // namespace worksheet
