#include "host/packcheck/program/options.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>

#include "host/efiutils/system/paths.hpp"
#include "host/efiutils/system/platform.hpp"

namespace packcheck {

namespace {

bool takes_name(const std::vector<std::string>& names, const std::string& name) {
  return names.empty() || std::find(names.begin(), names.end(), name) != names.end();
}

std::vector<std::string> check_names() {
  std::vector<std::string> names;
  for (const Check& check : all_checks()) names.emplace_back(check.name);
  return names;
}

// Many times what a pack of some forty functions takes.
double check_limit_of(Depth depth) {
  return depth == Depth::brief ? 30.0 : depth == Depth::quick ? 120.0 : 3600.0;
}

// What is wrong with the name of a file; empty if nothing.
std::string file_objection(const std::string& name) {
  std::error_code failed;
  const std::filesystem::path path = efi::path_of(name);
  if (std::filesystem::is_directory(path, failed)) return "File is actually a directory: " + name;
  return std::filesystem::exists(path, failed) ? "" : "File does not exist: " + name;
}

void declare(CLI::App& app, Options& options, Selection& selection) {
  app.allow_windows_style_options(false);  // The same options everywhere.
  app.option_defaults()->take_last();
  app.set_version_flag("--version", PACKCHECK_VERSION);
  app.add_option("pack,--pack", options.pack, "the pack's library")->check(file_objection);
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
  app.add_option(
         "--check-limit", options.check_limit,
         "seconds by the clock for one check of all functions (brief 30, quick 120, full 3600)")
      ->check(CLI::PositiveNumber);
  app.add_flag("--strict", options.strict, "accept no null, and no export that no host asks for");
  app.add_flag("--json", selection.json, "one JSON object a line");
  app.add_flag("--list", selection.list, "list the checks");
}

}  // namespace

bool Selection::takes(const Check& check) const {
  return takes_name(checks, check.name);
}

bool Selection::takes(const Target& target) const {
  return takes_name(functions, target.function.name);
}

std::optional<Status> read_options(int argc, char** argv, Options& options, Selection& selection) {
  CLI::App app("Checks that a function pack keeps the promises that hosts rely on.");
  declare(app, options, selection);
  try {
    const std::vector<std::string> words = efi::program_arguments(argc, argv);
    // It wants the last one first.
    app.parse(std::vector<std::string>(words.rbegin(), words.rend() - 1));
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kNothingFound : kNoPack;
  }
  if (selection.list) return std::nullopt;
  if (options.pack.empty()) {
    std::fputs("packcheck: which pack? See packcheck --help.\n", stderr);
    return kNoPack;
  }
  if (options.check_limit == 0.0) options.check_limit = check_limit_of(options.depth);
  options.pack_name = options.pack;
  options.pack = efi::utf8_of(std::filesystem::absolute(efi::path_of(options.pack)));
  return std::nullopt;
}

}  // namespace packcheck
