#include "host/packcheck/program/report.hpp"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "host/packcheck/checks/checks.hpp"
#include "host/packcheck/process/child.hpp"

namespace packcheck {

namespace {

const char* depth_name(Depth depth) {
  return depth == Depth::brief ? "brief" : depth == Depth::quick ? "quick" : "full";
}

const char* scope_name(Scope scope) {
  return scope == Scope::pack ? "pack" : "function";
}

void print_line(const nlohmann::json& object) {
  fmt::print("{}\n", object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

// The command that makes the same call again.
std::string replay(const Options& options, const Finding& finding) {
  std::string command = fmt::format("packcheck --only {} --seed {} --depth {}", finding.check,
                                    options.seed, depth_name(options.depth));
  if (options.strict) command += " --strict";
  if (!finding.function.empty()) command += fmt::format(" --function '{}'", finding.function);
  if (finding.call >= 0) command += fmt::format(" --call {}", finding.call);
  return command + " " + options.pack_name;
}

}  // namespace

void print_text(const Options& options, const std::vector<Finding>& findings,
                const Summary& summary) {
  for (const Finding& finding : findings) {
    const std::string subject = finding.function.empty() ? "the pack" : finding.function;
    fmt::print("{}: {}: {}", finding.check, subject, finding.message);
    if (finding.times > 1) fmt::print("  ({} times)", finding.times);
    fmt::print("\n");
    if (!finding.arguments.empty()) fmt::print("    {}\n", finding.arguments);
    fmt::print("    {}\n", replay(options, finding));
  }
  for (const std::string& name : summary.refusing)
    fmt::print("{} gave an error for all arguments tried: only that was checked.\n", name);
  fmt::print(
      "{}: {} functions, {} checks of at most {} s, {} calls, {:.1f} s, seed {}, depth {}: {}\n",
      options.pack_name, summary.functions, summary.checks, options.check_limit, summary.calls,
      summary.seconds, options.seed, depth_name(options.depth),
      findings.empty()       ? "nothing found"
      : findings.size() == 1 ? "1 finding"
                             : fmt::format("{} findings", findings.size()));
  if (*kLeftOut != '\0') fmt::print("Not checked on this system: {}.\n", kLeftOut);
}

void print_json(const Options& options, const std::vector<Finding>& findings,
                const Summary& summary) {
  for (const Finding& finding : findings)
    print_line({{"type", "finding"},
                {"check", finding.check},
                {"function", finding.function},
                {"rule", finding.rule},
                {"message", finding.message},
                {"arguments", finding.arguments},
                {"call", finding.call},
                {"times", finding.times},
                {"seed", options.seed},
                {"replay", replay(options, finding)}});
  nlohmann::json line = {{"type", "summary"},
                         {"pack", options.pack},
                         {"functions", summary.functions},
                         {"refusing", summary.refusing},
                         {"checks", summary.checks},
                         {"calls", summary.calls},
                         {"findings", findings.size()},
                         {"seconds", summary.seconds},
                         {"seed", options.seed},
                         {"depth", depth_name(options.depth)},
                         {"strict", options.strict},
                         {"time_limit", options.time_limit},
                         {"check_limit", options.check_limit}};
  if (*kLeftOut != '\0') line["left_out"] = kLeftOut;
  print_line(line);
}

void list_text() {
  for (const Check& check : all_checks())
    fmt::print("{:16} {:9} {}\n", check.name, scope_name(check.scope), check.promise);
}

void list_json() {
  for (const Check& check : all_checks())
    print_line({{"type", "check"},
                {"name", check.name},
                {"scope", scope_name(check.scope)},
                {"promise", check.promise}});
}

}  // namespace packcheck
