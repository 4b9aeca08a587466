#include "host/worksheet/program/options.hpp"

#include <CLI/CLI.hpp>
#include <map>

#include "host/efiutils/system/platform.hpp"

namespace worksheet {

namespace {

constexpr double kLeastTimeout = 0.001, kMostTimeout = 1e6;
// With less the program cannot begin.
constexpr std::uint64_t kLeastMemory = std::uint64_t{16} << 20,
                        kMostMemory = std::uint64_t{1} << 62;

void declare(CLI::App& app, Options& options) {
  app.allow_windows_style_options(false);  // The same options everywhere.
  app.add_option("FILE", options.file, "The worksheet; - is standard input; none: interactive");
  app.add_option("-e", options.expressions, "Evaluate EXPR, before FILE's statements")
      ->type_name("EXPR")
      ->allow_extra_args(false);
  app.add_flag("--prompt", options.prompt, "Start the prompt behind FILE, with its variables");
  app.add_flag("--watch", options.watch,
               "Evaluate FILE again whenever it is saved, or a file it reads, until Ctrl-C");
  app.add_flag("--json", options.json, "Print one JSON object per statement");
  app.add_option("--html", options.html, "Write a report of the worksheet to this file as well")
      ->type_name("FILE");
  app.add_option("--load", options.load, "Begin with the variables that --save kept")
      ->type_name("FILE");
  app.add_option("--save", options.save, "Keep the variables in this file at the end")
      ->type_name("FILE");
  app.add_option("--pack", options.packs, "Load this pack")
      ->type_name("PATH")
      ->allow_extra_args(false);
  app.add_option("--functions", options.functions, "List the functions, or describe those named")
      ->type_name("[NAME]")
      ->expected(0, -1);
  app.add_flag("--words", options.list_words, "List the words of the language, for editors");
  app.add_option("--register", options.register_path, "Enter a pack into the catalogue")
      ->type_name("PATH");
  app.add_option("--unregister", options.unregister_path, "Remove a pack from the catalogue")
      ->type_name("PATH");
  app.add_flag("--packs", options.list_packs, "List the packs of the catalogue");
  app.add_option("--sandbox", options.sandbox, "Let worksheets read and write below DIR only")
      ->type_name("DIR");
  app.add_option("--timeout", options.timeout, "Let a statement take SECONDS at most")
      ->type_name("SECONDS")
      ->check(CLI::Range(kLeastTimeout, kMostTimeout));
  app.add_option("--max-memory", options.max_memory,
                 "Let the program take SIZE bytes at most (100M, 2G)")
      ->type_name("SIZE")
      ->transform(CLI::AsSizeValue(false))
      ->check(CLI::Range(kLeastMemory, kMostMemory));
  app.add_option("--digits", options.digits, "Show numbers with N significant digits")
      ->type_name("N")
      ->check(CLI::Range(1, kMostDigits));
  app.add_option("--format", options.format, "Show numbers as fix N, sci N, eng N or auto N")
      ->type_name("KIND N")
      ->expected(2)
      ->allow_extra_args(false)
      ->excludes("--digits");
  static const std::map<std::string, audit::Effort> kEfforts = {
      {"off", audit::Effort::off}, {"on", audit::Effort::on}, {"full", audit::Effort::full}};
  app.add_option("--audit", options.audit,
                 "Say how far results can be trusted: off, on, or full at any cost")
      ->type_name("EFFORT")
      ->transform(CLI::CheckedTransformer(kEfforts).description(""));
  app.add_flag("--all", options.all, "Show values whole, however large");
  app.set_version_flag("--version", "worksheet " WORKSHEET_VERSION);
}

}  // namespace

std::optional<Status> read_options(int argc, char** argv, Options& options) {
  CLI::App app("Evaluates worksheets with the functions of loadable packs.", "worksheet");
  declare(app, options);
  try {
    const std::vector<std::string> words = efi::program_arguments(argc, argv);
    // It wants the last one first.
    app.parse(std::vector<std::string>(words.rbegin(), words.rend() - 1));
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kAllWell : kWrongUsage;
  }
  options.list_functions = app.count("--functions") > 0;
  std::erase(options.functions, "");  // What the option holds where no name follows it.
  return std::nullopt;
}

}  // namespace worksheet
