// The worksheet application.
#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "host/efiutils/catalogue.hpp"
#include "host/efiutils/replace_file.hpp"
#include "host/worksheet/help/listing.hpp"
#include "host/worksheet/help/reference.hpp"
#include "host/worksheet/output/display.hpp"
#include "host/worksheet/output/json_output.hpp"
#include "host/worksheet/program/prompt.hpp"
#include "host/worksheet/report/report.hpp"
#include "host/worksheet/session/session.hpp"

namespace {

using namespace worksheet;

constexpr int kAllWell = 0;
constexpr int kSomeError = 1;
constexpr int kWrongUsage = 2;

constexpr std::size_t kMostHiddenNames = 5;  // Of functions, in a message.

struct Options {
  std::vector<std::string> expressions;
  std::string file;
  std::string html;
  std::vector<std::string> packs;
  std::string register_path, unregister_path;
  bool json = false;
  bool all = false;
  bool list_functions = false;
  std::vector<std::string> functions;  // To be described; none: all are listed.
  bool list_packs = false;
  int digits = DisplayOptions().digits;
};

void complain(const std::string& what) {
  fmt::print(stderr, "worksheet: {}\n", what);
}

// What the handler of SIGINT reaches.
Machine* interruptible = nullptr;

void on_interrupt(int) {
  interruptible->interrupted = 1;
}

// Ctrl-C ends the evaluation under way. Calls into the system are not resumed: the prompt notices.
void install_interruption(Machine& machine) {
  interruptible = &machine;
  struct sigaction action = {};
  action.sa_handler = on_interrupt;
  sigaction(SIGINT, &action, nullptr);
}

// --- Packs ---

// Takes a pack in and says which of its functions earlier packs hide. Throws PackError.
void add_pack(Machine& machine, const std::string& path) {
  std::error_code ignored;
  for (const auto& pack : machine.packs)
    if (std::filesystem::equivalent(pack->path(), path, ignored)) return;
  auto pack = std::make_unique<Pack>(path);
  std::vector<std::string> hidden;
  std::string first;
  for (const Row& row : pack->rows())
    if (const Row* earlier = machine.find_row(row.name)) {
      if (hidden.empty()) first = earlier->pack->path();
      hidden.push_back(row.name);
    }
  machine.add_pack(std::move(pack));
  if (hidden.empty()) return;
  const std::size_t count = hidden.size();
  if (count > kMostHiddenNames) {
    hidden.resize(kMostHiddenNames);
    hidden.emplace_back("...");
  }
  complain(fmt::format("{}: {} of its {} functions are hidden by {}: {}", path, count,
                       machine.packs.back()->rows().size(), first, fmt::join(hidden, ", ")));
}

void add_named_packs(Machine& machine, const std::vector<std::string>& paths) {
  for (const std::string& path : paths) add_pack(machine, path);
}

// The packs of the catalogue; one that cannot be had is reported and left out.
void add_registered_packs(Machine& machine) {
  try {
    for (const efi::CatalogueEntry& entry : efi::read_catalogue()) try {
        add_pack(machine, entry.path);
      } catch (const PackError& error) {
        complain(fmt::format("a registered pack is left out: {} (--unregister {} removes it)",
                             error.what(), entry.path));
      }
  } catch (const efi::CatalogueError& error) {
    complain(error.what());
  }
}

// Throws PackError when there is no pack at all.
void add_packs(Machine& machine, const Options& options) {
  add_named_packs(machine, options.packs);
  if (machine.packs.empty()) add_registered_packs(machine);
  if (!machine.packs.empty()) return;
  const std::string path = neighbouring_pack();
  if (path.empty()) throw PackError("there is no function pack: name one with --pack");
  machine.add_pack(std::make_unique<Pack>(path));
}

// --- What the program does ---

Session::Report json_report() {
  return [](const Machine& machine, const Outcome& outcome) {
    std::cout << json_line(outcome_json(machine, outcome)) << std::endl;
  };
}

Session::Report text_report(const DisplayOptions& options) {
  return [options](const Machine& machine, const Outcome& outcome) {
    std::cout << outcome_text(machine, outcome, options) << std::flush;
  };
}

bool wants_colour() {
  const char* const forbidden = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) && (forbidden == nullptr || *forbidden == '\0') &&
         terminal != nullptr && std::string_view(terminal) != "dumb";
}

// The columns of the terminal; what is usual where there is none.
int line_width() {
  winsize size = {};
  const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
  return known ? size.ws_col : DisplayOptions().width;
}

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
std::unique_ptr<Report> wanted_report(const Options& options) {
  if (options.html.empty()) return nullptr;
  const std::string objection = report_objection(options.html, options.file);
  if (!objection.empty()) throw std::runtime_error(fmt::format("{}: {}", options.html, objection));
  const bool named = !options.file.empty() && options.file != "-";
  const std::string name =
      named ? std::filesystem::path(options.file).filename().string() : "worksheet";
  return std::make_unique<Report>(name, options.digits);
}

bool write_report(const Options& options, const Report& report, bool interrupted) {
  const int error = efi::replace_file(options.html, report.page(interrupted));
  if (error != 0)
    complain(fmt::format("{}: cannot be written: {}", options.html, std::strerror(error)));
  return error == 0;
}

// Lists the functions, or says what there is to say about some of them.
int show_functions(const Machine& machine, const Options& options, int width) {
  if (options.json) {
    std::cout << functions_json(machine);
    return kAllWell;
  }
  if (options.functions.empty()) std::cout << reference_list(whole_reference(machine), width);
  for (const std::string& name : options.functions) {
    const std::string text = help_text(machine, name, width);
    if (text.empty()) {
      complain(fmt::format("there is no help on {}; --functions alone lists everything", name));
      return kWrongUsage;
    }
    std::cout << (&name == &options.functions.front() ? "" : "\n") << text;
  }
  return kAllWell;
}

int run(const Options& options) {
  DisplayOptions display;
  display.digits = options.digits;
  display.colour = wants_colour();
  display.all = options.all;
  display.width = line_width();
  display.show_source = !options.file.empty();
  const std::unique_ptr<Report> report = wanted_report(options);
  const Session::Report usual = options.json ? json_report() : text_report(display);
  Session session([&](const Machine& machine, const Outcome& outcome) {
    usual(machine, outcome);
    if (report != nullptr) report->add(machine, outcome);
  });
  session.machine().keeps_pictures = report != nullptr;
  add_packs(session.machine(), options);
  if (options.list_functions) return show_functions(session.machine(), options, display.width);
  install_interruption(session.machine());
  if (isatty(STDERR_FILENO)) session.show_progress(STDERR_FILENO);
  run_expressions(session, options.expressions);
  if (!options.file.empty()) {
    if (!run_file(session, options.file, report.get())) return kWrongUsage;
  } else if (options.expressions.empty()) {
    if (isatty(STDIN_FILENO) && !options.json)
      run_prompt(session);
    else
      run_text(session, std::cin, report.get());
  }
  if (report != nullptr && !write_report(options, *report, session.machine().interrupted))
    return kWrongUsage;
  return session.failed() ? kSomeError : kAllWell;
}

// Lets the pack remove itself from the catalogue; one that cannot be had is removed for it.
void unregister(const std::string& path) {
  try {
    Pack(path).unregister_pack();
  } catch (const PackError& error) {
    if (!efi::forget_pack(path)) throw;
    complain(fmt::format("{}: removed from the catalogue, unasked: {}", path, error.what()));
  }
}

int manage_catalogue(const Options& options) {
  if (!options.register_path.empty()) Pack(options.register_path).register_pack();
  if (!options.unregister_path.empty()) unregister(options.unregister_path);
  if (options.list_packs) std::cout << (options.json ? packs_json() : packs_text());
  return kAllWell;
}

void declare(CLI::App& app, Options& options) {
  app.add_option("FILE", options.file, "The worksheet; - is standard input; none: interactive");
  app.add_option("-e", options.expressions, "Evaluate EXPR, before FILE's statements")
      ->type_name("EXPR")
      ->allow_extra_args(false);
  app.add_flag("--json", options.json, "Print one JSON object per statement");
  app.add_option("--html", options.html, "Write a report of the worksheet to this file as well")
      ->type_name("FILE");
  app.add_option("--pack", options.packs, "Load this pack")
      ->type_name("PATH")
      ->allow_extra_args(false);
  app.add_option("--functions", options.functions, "List the functions, or describe those named")
      ->type_name("[NAME]")
      ->expected(0, -1);
  app.add_option("--register", options.register_path, "Enter a pack into the catalogue")
      ->type_name("PATH");
  app.add_option("--unregister", options.unregister_path, "Remove a pack from the catalogue")
      ->type_name("PATH");
  app.add_flag("--packs", options.list_packs, "List the packs of the catalogue");
  app.add_option("--digits", options.digits, "Show numbers with N significant digits")
      ->type_name("N")
      ->check(CLI::Range(1, 17));
  app.add_flag("--all", options.all, "Show every row and column of long matrices");
  app.set_version_flag("--version", "worksheet " WORKSHEET_VERSION);
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app("Evaluates worksheets with the functions of loadable packs.", "worksheet");
  declare(app, options);
  try {
    app.parse(argc, argv);
    options.list_functions = app.count("--functions") > 0;
    std::erase(options.functions, "");  // What the option holds where no name follows it.
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kAllWell : kWrongUsage;
  }
  try {
    const bool catalogue =
        options.list_packs || !options.register_path.empty() || !options.unregister_path.empty();
    return catalogue ? manage_catalogue(options) : run(options);
  } catch (const std::runtime_error& error) {
    complain(error.what());
  }
  return kWrongUsage;
}
