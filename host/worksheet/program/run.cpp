#include "host/worksheet/program/run.hpp"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "fmt/format.h"
#include "host/efiutils/files.hpp"
#include "host/worksheet/output/display.hpp"
#include "host/worksheet/output/help_text.hpp"
#include "host/worksheet/output/json_output.hpp"
#include "host/worksheet/output/listing.hpp"
#include "host/worksheet/program/pack_choice.hpp"
#include "host/worksheet/program/prompt.hpp"
#include "host/worksheet/program/terminal.hpp"
#include "host/worksheet/report/report.hpp"
#include "host/worksheet/session/interruption.hpp"
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

// Whether the file begins as no text does. Leaves the file as if it had not been looked at.
bool is_binary(std::ifstream& file) {
  char start[512];
  file.read(start, sizeof start);
  const auto count = static_cast<std::size_t>(file.gcount());
  file.clear();
  file.seekg(0);
  return std::find(start, start + count, '\0') != start + count;
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

bool run_file(Session& session, const std::string& path, Report* report) {
  if (path == "-") {
    run_text(session, std::cin, report);
    return true;
  }
  std::error_code ignored;
  std::ifstream file(path);
  if (!file || std::filesystem::is_directory(path, ignored)) {
    complain(fmt::format("{}: cannot be read", path));
    return false;
  }
  if (std::filesystem::is_regular_file(path, ignored) && is_binary(file)) {
    complain(fmt::format("{}: is no text in UTF-8", path));
    return false;
  }
  const auto directory = std::filesystem::path(path).parent_path();
  session.machine().directory = directory.empty() ? "." : directory.string();
  run_text(session, file, report);
  return true;
}

// The report of a run that is wanted; null if none is. Throws std::runtime_error.
std::unique_ptr<Report> wanted_report(const Options& options, const DisplayOptions& display) {
  if (options.html.empty()) return nullptr;
  const std::string objection = report_objection(options.html, options.file);
  if (!objection.empty()) throw std::runtime_error(fmt::format("{}: {}", options.html, objection));
  const bool named = !options.file.empty() && options.file != "-";
  const std::string name =
      named ? std::filesystem::path(options.file).filename().string() : "worksheet";
  return std::make_unique<Report>(name, display);
}

bool write_report(const Options& options, const Report& report, bool interrupted) {
  const int error = efi::replace_file(options.html, report.page(interrupted));
  if (error != 0)
    complain(fmt::format("{}: cannot be written: {}", options.html, std::strerror(error)));
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

DisplayOptions display_options(const Options& options) {
  DisplayOptions display;
  display.digits = options.digits;
  display.colour = wants_colour();
  display.all = options.all;
  display.width = line_width();
  display.show_source = !options.file.empty();
  return display;
}

// Runs the expressions and the file, or what comes from standard input. False when there is no such
// file.
bool run_all(Session& session, const Options& options, Report* report) {
  run_expressions(session, options.expressions);
  if (!options.file.empty()) return run_file(session, options.file, report);
  if (!options.expressions.empty()) return true;
  if (isatty(STDIN_FILENO) && !options.json)
    run_prompt(session);
  else
    run_text(session, std::cin, report);
  return true;
}

}  // namespace

Status run(const Options& options) {
  const DisplayOptions display = display_options(options);
  const std::unique_ptr<Report> report = wanted_report(options, display);
  Session session([&](const Outcome& outcome) {
    if (options.json)
      write_outcome(std::cout, outcome, options.all);
    else
      show_outcome(std::cout, outcome, display);
    std::cout << std::flush;
    if (report != nullptr) report->add(outcome);
  });
  Machine& machine = session.machine();
  machine.keeps_pictures = report != nullptr;
  add_packs(machine, options);
  if (options.list_functions) return show_functions(machine, options, display.width);
  let_interrupt(machine);
  if (isatty(STDERR_FILENO)) session.show_progress(STDERR_FILENO);
  if (!run_all(session, options, report.get())) return kWrongUsage;
  if (report != nullptr && !write_report(options, *report, machine.interrupted)) return kWrongUsage;
  return session.failed() ? kSomeError : kAllWell;
}

}  // namespace worksheet
