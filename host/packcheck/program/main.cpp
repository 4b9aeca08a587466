// packcheck: does a function pack keep the promises that hosts rely on?
//
// Exit status: 0 nothing was found, 1 something was, 2 wrong usage or no pack.
#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <system_error>

#include "host/efiutils/system/paths.hpp"
#include "host/packcheck/checks/checks.hpp"
#include "host/packcheck/process/surroundings.hpp"
#include "host/packcheck/program/options.hpp"
#include "host/packcheck/program/report.hpp"
#include "host/packcheck/program/runner.hpp"
#include "host/packcheck/program/task.hpp"

namespace {

namespace fs = std::filesystem;
using namespace packcheck;

// A directory for the catalogue of this run, so that no check touches the user's.
class PrivateCatalogue {
 public:
  PrivateCatalogue() {
    set_variable("WORKSHEET_CATALOGUE", efi::utf8_of(directory_ / "packs.json"));
  }
  ~PrivateCatalogue() {
    std::error_code ignored;
    fs::remove_all(directory_, ignored);
  }
  PrivateCatalogue(const PrivateCatalogue&) = delete;
  PrivateCatalogue& operator=(const PrivateCatalogue&) = delete;

 private:
  const fs::path directory_ = new_directory();
};

// Throws worksheet::PackError for a name that is none of the pack's.
void require_functions(const std::vector<Target>& targets, const Selection& selection) {
  for (const std::string& name : selection.functions)
    if (std::none_of(targets.begin(), targets.end(),
                     [&](const Target& t) { return t.function.name == name; }))
      throw worksheet::PackError(fmt::format("it has no function {} that can be called", name));
}

// Lets `print` write to standard output. Throws std::system_error when something is lost there.
void tell(const std::function<void()>& print) {
  tell_of_lost_output();  // Not sooner: a pack finds signals as they are everywhere.
  print();
  if (std::fflush(stdout) != 0)
    throw std::system_error(errno, std::generic_category(), "standard output");
}

Status check_pack(const Options& options, const Selection& selection) {
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
    runner.begin_check();
    if (check.scope == Scope::pack) runner.run(check, nullptr);
    for (const Target& target : targets)
      if (check.scope == Scope::function && selection.takes(target)) runner.run(check, &target);
  }
  summary.calls = runner.calls_made();
  summary.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  tell([&] { (selection.json ? print_json : print_text)(options, runner.findings(), summary); });
  return runner.findings().empty() ? kNothingFound : kFound;
}

}  // namespace

int main(int argc, char** argv) {
  if (const auto status = run_as_child(argc, argv, perform)) return *status;
  Options options;
  Selection selection;
  if (const auto status = read_options(argc, argv, options, selection)) return *status;
  try {
    if (!selection.list) return check_pack(options, selection);
    tell(selection.json ? list_json : list_text);
    return kNothingFound;
  } catch (const std::exception& error) {
    const std::string subject = selection.list ? "" : options.pack_name + ": ";
    std::fprintf(stderr, "packcheck: %s%s\n", subject.c_str(), error.what());
    return kNoPack;
  }
}
