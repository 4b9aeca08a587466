#include "host/worksheet/program/run.hpp"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <optional>
#include <sstream>
#include <system_error>

#include "fmt/format.h"
#include "host/efiutils/system/files.hpp"
#include "host/efiutils/system/paths.hpp"
#include "host/efiutils/system/platform.hpp"
#include "host/text/text.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/output/display.hpp"
#include "host/worksheet/output/help_text.hpp"
#include "host/worksheet/output/json_output.hpp"
#include "host/worksheet/output/listing.hpp"
#include "host/worksheet/program/kept_variables.hpp"
#include "host/worksheet/program/prompt.hpp"
#include "host/worksheet/program/system/process.hpp"
#include "host/worksheet/program/system/terminal.hpp"
#include "host/worksheet/program/system/viewer.hpp"
#include "host/worksheet/program/system/watch.hpp"
#include "host/worksheet/program/word_list.hpp"
#include "host/worksheet/report/report.hpp"
#include "host/worksheet/session/interruption.hpp"
#include "host/worksheet/session/load_packs.hpp"
#include "host/worksheet/session/session.hpp"

namespace worksheet {

namespace {

void run_expressions(Session& session, const std::vector<std::string>& expressions) {
  int line = 1;
  for (const std::string& expression : expressions) {
    if (session.machine().interrupted) return;
    std::istringstream text(expression);
    session.run_text(text, line++);
  }
}

// Whether the file begins as no text does.
bool is_binary(const efi::Descriptor& file) {
  char start[512];
  const ssize_t count = read(file.get(), start, sizeof start);
  lseek(file.get(), 0, SEEK_SET);
  return count > 0 && std::find(start, start + count, '\0') != start + count;
}

// Runs text; a report shows its comments too.
void run_text(Session& session, std::istream& stream, Report* report) {
  if (report == nullptr) return session.run_text(stream);
  const std::string text(std::istreambuf_iterator<char>(stream), {});
  std::istringstream again(text);
  report->begin_text(text);
  session.run_text(again);
  if (!session.machine().interrupted) report->end_text();
}

bool complain_of_reading(const std::string& name, int error) {
  complain(fmt::format("{}: cannot be read: {}", name, efi::file_error_words(error)));
  return false;
}

// Runs the text behind a descriptor; false, said, when not all of it could be read.
bool run_descriptor(Session& session, int descriptor, const std::string& name, Report* report) {
  efi::InputBuffer buffer(descriptor, &session.machine().interrupted);
  std::istream text(&buffer);
  try {
    run_text(session, text, report);
  } catch (const std::system_error&) {
    // Said below, as where the stream kept it to itself.
  }
  return buffer.error() == 0 || complain_of_reading(name, buffer.error());
}

bool run_standard_input(Session& session, Report* report) {
  return run_descriptor(session, STDIN_FILENO, "standard input", report);
}

// A worksheet may come through a pipe; data may not.
bool run_file(Session& session, const std::string& path, Report* report) {
  if (path == "-") return run_standard_input(session, report);
  const efi::Descriptor file = efi::open_to_wait(path);
  const int error = file.get() < 0 ? errno : efi::file_error(file.get());
  if (error != 0 && error != efi::kNoFile) return complain_of_reading(path, error);
  if (error == 0 && is_binary(file)) {
    complain(fmt::format("{}: is no text in UTF-8", path));
    return false;
  }
  const auto directory = efi::path_of(path).parent_path();
  session.machine().files.directory = directory.empty() ? "." : efi::utf8_of(directory);
  return run_descriptor(session, file.get(), path, report);
}

// The report of a run that is wanted; null if none is. Throws std::runtime_error.
std::unique_ptr<Report> wanted_report(const Options& options, const DisplayOptions& display) {
  if (options.html.empty()) return nullptr;
  const std::string objection = report_objection(options.html, options.file);
  if (!objection.empty()) throw std::runtime_error(fmt::format("{}: {}", options.html, objection));
  const bool named = !options.file.empty() && options.file != "-";
  const std::string name =
      named ? efi::utf8_of(efi::path_of(options.file).filename()) : "worksheet";
  return std::make_unique<Report>(name, display);
}

bool write_report(const Options& options, const Report& report, bool interrupted) {
  const int error = efi::replace_file(options.html, report.page(interrupted));
  if (error != 0)
    complain(fmt::format("{}: cannot be written: {}", options.html, efi::file_error_words(error)));
  return error == 0;
}

// Lists the functions, or says what there is to say about some of them.
Status show_functions(const Machine& machine, const Options& options, int width) {
  if (options.json) {
    std::cout << functions_json(machine);
    return kAllWell;
  }
  if (options.functions.empty()) std::cout << reference_list(whole_reference(machine), width);
  for (const std::string& name : options.functions) {
    const auto page = help_page(machine, name);
    if (!page) {
      complain(fmt::format("there is no help on {}; --functions alone lists everything", name));
      return kWrongUsage;
    }
    std::cout << (&name == &options.functions.front() ? "" : "\n") << help_text(*page, width);
  }
  return kAllWell;
}

// Throws std::runtime_error.
NumberFormat wanted_format(const Options& options) {
  if (options.digits != 0) return {NumberFormat::Kind::automatic, options.digits};
  if (options.format.empty()) return {};
  const auto format = parse_format(joined(options.format, " "));
  if (!format) throw std::runtime_error(fmt::format("--format: {}", kFormatWanted));
  return *format;
}

DisplayOptions display_options(const Options& options) {
  DisplayOptions display;
  display.format = wanted_format(options);
  display.colour = wants_colour();
  display.all = options.all;
  display.width = line_width();
  display.show_source = !options.file.empty();
  return display;
}

// Whether statements are asked for at a terminal.
bool is_interactive(const Options& options) {
  const bool wanted = options.prompt || (options.file.empty() && options.expressions.empty());
  return wanted && !options.json && efi::is_terminal(STDIN_FILENO);
}

// Throws std::runtime_error for options that do not go together.
void check_options(const Options& options) {
  if (options.prompt && (!is_interactive(options) || options.watch || options.file == "-"))
    throw std::runtime_error("--prompt wants a terminal, and neither --json nor --watch");
  if (options.watch && (options.file.empty() || options.file == "-"))
    throw std::runtime_error("--watch wants the name of a worksheet");
}

// Runs the expressions and the file, or what comes from standard input. False when there is no such
// file.
bool run_worksheets(Session& session, const Options& options, Report* report) {
  run_expressions(session, options.expressions);
  if (!options.file.empty()) return run_file(session, options.file, report);
  const bool done = !options.expressions.empty() || is_interactive(options);
  return done || run_standard_input(session, report);
}

// Prints outcomes. A run ends with standard output, unless a report is wanted too; at the prompt
// Ctrl-C ends the output of one statement.
class OutcomePrinter {
 public:
  OutcomePrinter(StandardOutput& output, bool has_report, bool at_prompt)
      : output_(output), has_report_(has_report), at_prompt_(at_prompt) {}

  // Lets `print` write to std::cout.
  template <class Print>
  void print(Print print) {
    if (lost_) return;
    output_.resume();
    print();
    try {
      output_.flush();
    } catch (const OutputError& error) {
      lost_ = !(at_prompt_ && output_.was_stopped());
      if (lost_ && !has_report_) throw;
      complain(error.what());
      output_.resume();
    }
  }
  bool lost() const { return lost_; }

 private:
  StandardOutput& output_;
  const bool has_report_, at_prompt_;
  bool lost_ = false;
};

// The status of a run that has come to its end.
Status status_of(Session& session, bool output_lost) {
  const Machine& machine = session.machine();
  if (machine.interrupted) complain("interrupted: the worksheet was not evaluated to its end");
  if (output_lost || machine.files.output_lost()) return kWrongUsage;
  return session.failed() || machine.interrupted ? kSomeError : kAllWell;
}

}  // namespace

namespace {

// Runs once; with a watch, waits until the worksheet or a file that it reads is saved, and then it
// is to run *again.
Status run_once(const Options& options, StandardOutput& output, FileWatch* watch, bool* again) {
  DisplayOptions display = display_options(options);
  const std::unique_ptr<Report> report = wanted_report(options, display);
  OutcomePrinter printer(output, report != nullptr, is_interactive(options));
  Viewer viewer;
  bool at_prompt = false;
  const SheetFiles* files = nullptr;
  Session session([&](const Outcome& outcome) {
    printer.print([&] {
      if (options.json)
        write_outcome(std::cout, outcome, options.all);
      else
        show_outcome(std::cout, outcome, display);
      if (at_prompt) viewer.show(outcome.pictures, *files, std::cout);
    });
    if (report != nullptr) report->add(outcome);
  });
  session.set_format(display.format);
  Machine& machine = session.machine();
  if (report != nullptr) machine.keeps_pictures = Machine::Keep::all;
  machine.trust.effort = options.audit;
  machine.seconds_allowed = options.timeout;
  if (!options.sandbox.empty()) machine.files.confine(options.sandbox);
  if (watch != nullptr) {
    watch->begin();
    machine.files.on_read = [watch](const std::string& path) { watch->also(path); };
  }
  if (options.max_memory != 0) limit_memory(options.max_memory);
  load_packs(machine, options.packs, complain);
  check_state_file(options);
  if (!options.load.empty()) load_variables(machine, options.load);
  if (options.list_functions) return show_functions(machine, options, display.width);
  if (options.list_words) {
    std::cout << word_list(machine);
    return kAllWell;
  }
  let_interrupt(machine);
  output.stop_at(&machine.interrupted);
  if (efi::is_terminal(STDERR_FILENO)) session.show_progress(STDERR_FILENO);
  if (!run_worksheets(session, options, report.get())) return kWrongUsage;
  if (is_interactive(options) && !machine.interrupted) {
    at_prompt = true;
    files = &machine.files;
    display.show_source = false;
    if (report == nullptr) machine.keeps_pictures = Machine::Keep::without_file;
    run_prompt(session);
  }
  const bool saved = options.save.empty() || save_variables(machine, options.save);
  if (report != nullptr && !write_report(options, *report, machine.interrupted)) return kWrongUsage;
  const Status status = status_of(session, printer.lost() || !saved);
  if (watch != nullptr) watch->leave_out(machine.files.written());
  *again = watch != nullptr && watch->wait(machine.interrupted);
  return status;
}

}  // namespace

Status run(const Options& options, StandardOutput& output) {
  check_options(options);
  std::optional<FileWatch> watch;
  if (options.watch) watch.emplace(options.file);
  for (;;) {
    bool again = false;
    const Status status = run_once(options, output, watch ? &*watch : nullptr, &again);
    if (!again) return status;
    complain(fmt::format("{} was saved", watch->saved()));
  }
}

}  // namespace worksheet
