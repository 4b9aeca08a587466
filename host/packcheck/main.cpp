// packcheck: does a function pack keep the promises that hosts rely on?
//
// Exit status: 0 nothing was found, 1 something was, 2 wrong usage or no pack.
#include <fmt/format.h>
#include <stdlib.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>

#include "host/packcheck/checks/checks.hpp"
#include "host/packcheck/report.hpp"
#include "host/packcheck/runner.hpp"

namespace {

namespace fs = std::filesystem;
using namespace packcheck;

constexpr int kFound = 1;
constexpr int kNoPack = 2;

struct Selection {
  std::vector<std::string> checks;
  std::vector<std::string> functions;
  bool json = false;
  bool list = false;

  bool takes(const Check& check) const { return takes(checks, check.name); }
  bool takes(const Target& target) const { return takes(functions, target.function.name); }

 private:
  // An empty list takes everything.
  static bool takes(const std::vector<std::string>& names, const std::string& name) {
    return names.empty() || std::find(names.begin(), names.end(), name) != names.end();
  }
};

// A directory for the catalogue of this run, so that no check touches the user's.
class PrivateCatalogue {
 public:
  PrivateCatalogue() {
    std::string pattern = (fs::temp_directory_path() / "packcheck-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary directory");
    directory_ = pattern;
    setenv("WORKSHEET_CATALOGUE", (directory_ / "packs.json").c_str(), 1);
  }
  ~PrivateCatalogue() {
    std::error_code ignored;
    fs::remove_all(directory_, ignored);
  }
  PrivateCatalogue(const PrivateCatalogue&) = delete;
  PrivateCatalogue& operator=(const PrivateCatalogue&) = delete;

 private:
  fs::path directory_;
};

// Throws worksheet::PackError for a name that is none of the pack's.
void require_functions(const std::vector<Target>& targets, const Selection& selection) {
  for (const std::string& name : selection.functions)
    if (std::none_of(targets.begin(), targets.end(),
                     [&](const Target& t) { return t.function.name == name; }))
      throw worksheet::PackError(fmt::format("it has no function {} that can be called", name));
}

int check_pack(const Options& options, const Selection& selection) {
  const auto start = std::chrono::steady_clock::now();
  const PrivateCatalogue catalogue;
  Runner runner(options);
  runner.survey();
  const std::vector<Target>& targets = runner.targets();
  require_functions(targets, selection);
  Summary summary = {targets.size(), {}, 0, 0, 0.0};
  for (const Target& target : targets)
    if (!target.is_taken) summary.refusing.push_back(target.function.name);
  for (const Check& check : all_checks()) {
    if (!selection.takes(check)) continue;
    ++summary.checks;
    if (check.scope == Scope::pack) runner.run(check, nullptr);
    for (const Target& target : targets)
      if (check.scope == Scope::function && selection.takes(target)) runner.run(check, &target);
  }
  summary.calls = runner.calls_made();
  summary.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  (selection.json ? print_json : print_text)(options, runner.findings(), summary);
  return runner.findings().empty() ? 0 : kFound;
}

std::vector<std::string> check_names() {
  std::vector<std::string> names;
  for (const Check& check : all_checks()) names.emplace_back(check.name);
  return names;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  Selection selection;
  CLI::App app("Checks that a function pack keeps the promises that hosts rely on.");
  app.option_defaults()->take_last();
  app.set_version_flag("--version", PACKCHECK_VERSION);
  app.add_option("pack,--pack", options.pack, "the pack's library")->check(CLI::ExistingFile);
  app.add_option("--only", selection.checks, "run this check only (may repeat)")
      ->take_all()
      ->allow_extra_args(false)
      ->check(CLI::IsMember(check_names()));
  app.add_option("--function", selection.functions, "check this function only (may repeat)")
      ->take_all()
      ->allow_extra_args(false);
  app.add_option("--call", options.only_call, "make only the call of this number")
      ->check(CLI::NonNegativeNumber);
  app.add_option("--seed", options.seed, "of the random calls (1)");
  const std::map<std::string, Depth> depths = {
      {"brief", Depth::brief}, {"quick", Depth::quick}, {"full", Depth::full}};
  app.add_option("--depth", options.depth, "how much: brief, quick (the default) or full")
      ->transform(CLI::CheckedTransformer(depths));
  app.add_option("--time-limit", options.time_limit, "seconds for one call (2)")
      ->check(CLI::PositiveNumber);
  app.add_flag("--strict", options.strict, "accept no null, and no export that no host asks for");
  app.add_flag("--json", selection.json, "one JSON object a line");
  app.add_flag("--list", selection.list, "list the checks");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kNoPack;
  }
  if (selection.list) {
    (selection.json ? list_json : list_text)();
    return 0;
  }
  if (options.pack.empty()) {
    fmt::print(stderr, "packcheck: which pack? See packcheck --help.\n");
    return kNoPack;
  }
  options.pack_name = options.pack;
  options.pack = fs::absolute(options.pack).string();
  try {
    return check_pack(options, selection);
  } catch (const std::exception& error) {
    fmt::print(stderr, "packcheck: {}: {}\n", options.pack_name, error.what());
    return kNoPack;
  }
}
