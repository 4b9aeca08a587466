// packcheck finds the fault of each broken pack, and nothing in packs that keep their promises.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "tests/host/build_files.hpp"
#include "tests/host/sheet.hpp"

namespace {

using test::Directory;
using test::Json;
using test::tiny_pack;

test::ProgramRun run(const std::string& arguments) {
  const Directory directory;
  const std::string command = fmt::format("{} {} >'{}' 2>'{}'", test::kPackcheck, arguments,
                                          directory.path("out"), directory.path("err"));
  const int status = std::system(command.c_str());
  return {directory.read("out"), directory.read("err"),
          WIFEXITED(status) ? WEXITSTATUS(status) : -1};
}

struct Report {
  std::vector<Json> findings;
  Json summary;
  int status;

  std::set<std::string> checks() const {
    std::set<std::string> names;
    for (const Json& finding : findings) names.insert(finding["check"].get<std::string>());
    return names;
  }
};

Report check(const std::string& arguments) {
  const test::ProgramRun program = run("--json --depth brief " + arguments);
  Report report = {program.json(), {}, program.status};
  if (report.findings.empty() || report.findings.back()["type"] != "summary") {
    ADD_FAILURE() << "no summary: " << program.out << program.err;
    return report;
  }
  report.summary = report.findings.back();
  report.findings.pop_back();
  return report;
}

struct Case {
  const char* fault;
  std::set<std::string> checks;  // Which report, and no others.
  const char* words = "";        // Of the first of them.
  const char* rule = "";         // Of the first finding, where it matters.
};

std::ostream& operator<<(std::ostream& out, const Case& c) {
  return out << c.fault;
}

const Case kCases[] = {
    {"throws", {"survives"}, "std::runtime_error", "exception"},
    {"spins", {"survives"}, "did not return", "hang"},
    {"sleeps", {"survives"}, "did not return", "hang"},
    {"crashes", {"survives"}, "Segmentation fault", "crash"},
    {"exits", {"survives"}, "ended the process with status 0", "exit"},
    {"returns_null", {"result"}, "gives null"},
    {"returns_stale_value", {"result", "repeatable"}, "neither new nor an argument"},
    {"frees_what_it_returns", {"result", "memory"}, "or was freed"},
    {"wraps_a_size", {"result"}, "byte size"},
    {"shares_an_array", {"result", "memory"}, "array of an argument"},
    {"returns_foreign_value", {"result"}, "is not, or no longer, the host's"},
    {"numbers_no_argument", {"result"}, "is tied to argument 7 of"},
    {"remembers_a_call", {"repeatable"}, "another result"},
    {"reads_new_memory", {"repeatable"}, "another result"},
    {"leaks", {"leaks", "load"}, "keeps 1 block of 72 bytes each time"},
    {"leaks_malloc", {"leaks", "load"}, "keeps 1 block of malloc"},
    {"writes_behind", {"memory"}, "wrote outside of a block"},
    {"writes_in_front", {"memory"}, "wrote outside of a block"},
    {"reads_behind", {"memory"}, "0 bytes behind a block of 72 bytes"},
    {"writes_freed", {"memory", "out-of-memory"}, "byte 8 of a block of 32 bytes that was freed"},
    {"frees_twice", {"memory"}, "freed a block twice"},
    {"modifies_an_argument", {"arguments"}, "changed the real array of argument 1"},
    {"changes_a_record", {"arguments"}, "changed the record of argument 1"},
    {"writes_beside_an_argument", {"arguments", "memory"}, "wrote beside an array of argument 1"},
    {"trusts_memory", {"out-of-memory"}, "Segmentation fault"},
    {"leaks_without_memory", {"out-of-memory"}, "keeps 1 block"},
    {"forgets_the_bracket", {"evaluator"}, "left an evaluator frame open"},
    {"pops_too_often", {"evaluator"}, "popped an evaluator frame that was not open"},
    {"rounds_upwards", {"floating-point"}, "changed"},
    {"raises_flags", {"floating-point"}, "changed the floating-point status flags"},
    {"sets_errno", {"environment"}, "set errno to 34"},
    {"sets_the_locale", {"environment", "load"}, "changed the C locale"},
    {"blocks_a_signal", {"environment", "load"}, "changed the mask of signal 10"},
    {"handles_a_signal", {"environment", "load"}, "changed the action of signal 10"},
    {"changes_directory", {"environment", "load"}, "changed the working directory (to /"},
    {"opens_a_file", {"environment", "load"}, "changed the descriptor "},
    {"prints", {"output", "load"}, "wrote \"twice\\n\" on standard output"},
    {"prints_when_loaded", {"load"}, "wrote \"tiny pack\\n\" on standard output"},
    {"handles_a_signal_when_loaded", {"load"}, "loading: changed the action of signal 10"},
    {"aborts_when_loaded", {"survives"}, "Aborted, loading the pack", "crash"},
    {"wrong_name_length", {"names"}, "the length of its name is 5, not 6"},
    {"no_handler", {"handlers"}, "it has no handler"},
    {"reserved_word", {"rows"}, "its reserved word is 1"},
    {"foreign_signature", {"signatures"}, "none of the host's"},
    {"bad_context", {"contexts"}, "no list of identifiers"},
    {"bad_unit_rule", {"unit-rules"}, "names b, which it does not bind"},
    {"too_many_rows", {"exports"}, "numFuncs is 3, and theEfi has room for 2 rows"},
    {"never_unregisters", {"registration"}, "DllUnregisterServer gives 0"},
    {"cannot_register", {"registration"}, "DllRegisterServer gives 5"},
};

class BrokenPack : public ::testing::TestWithParam<Case> {};

TEST_P(BrokenPack, is_found_out) {
  const Case& c = GetParam();
  // What never returns takes all of its time.
  const bool hangs = std::string_view(c.rule) == "hang";
  const Report report = check((hangs ? "--time-limit 0.03 " : "") + tiny_pack(c.fault));
  EXPECT_EQ(report.status, 1);
  EXPECT_EQ(report.checks(), c.checks);
  ASSERT_FALSE(report.findings.empty());
  const Json& finding = report.findings[0];
  EXPECT_NE(finding["message"].get<std::string>().find(c.words), std::string::npos) << finding;
  if (*c.rule != '\0') {
    EXPECT_EQ(finding["rule"], c.rule);
  }
}

std::string case_name(const ::testing::TestParamInfo<Case>& info) {
  return info.param.fault;
}
INSTANTIATE_TEST_SUITE_P(Packcheck, BrokenPack, ::testing::ValuesIn(kCases), case_name);

TEST(Packcheck, finds_nothing_in_packs_that_keep_their_promises) {
  for (const auto& [pack, calls] : {std::pair{"--depth quick " + tiny_pack("none"), 20000},
                                    std::pair{std::string(test::kPackFile), 30000}}) {
    const Report report = check(pack);
    EXPECT_EQ(report.status, 0);
    for (const Json& finding : report.findings) ADD_FAILURE() << finding;
    EXPECT_GT(report.summary["calls"].get<int>(), calls);
    EXPECT_EQ(report.summary["refusing"], Json::array());
  }
}

TEST(Packcheck, makes_a_call_again_by_its_number) {
  const Report report = check("--seed 5 " + tiny_pack("modifies_an_argument"));
  ASSERT_EQ(report.findings.size(), 1u);
  const std::string replay = report.findings[0]["replay"].get<std::string>();
  EXPECT_NE(replay.find("--seed 5"), std::string::npos);
  const Report again = check(replay.substr(replay.find(' ')));
  ASSERT_EQ(again.findings.size(), 1u);
  EXPECT_EQ(again.findings[0]["times"], 1);
  for (const char* what : {"call", "arguments", "message"})
    EXPECT_EQ(again.findings[0][what], report.findings[0][what]);
}

TEST(Packcheck, ends_each_check_in_its_time) {
  const Report report = check("--check-limit 0.3 --time-limit 100 " + tiny_pack("spins"));
  EXPECT_EQ(report.status, 1);
  EXPECT_EQ(report.checks(), std::set<std::string>{"survives"});
  EXPECT_EQ(report.findings.at(0)["message"], "was not done when the check had had its 0.3 s");
  EXPECT_EQ(report.findings.back()["rule"], "time") << "the other function is left out";
  EXPECT_EQ(report.summary["check_limit"], 0.3);
  // A library that somebody damaged.
  const Directory directory;
  for (std::size_t seed = 1; seed <= 6; ++seed) {
    const std::string path = directory.path("damaged.so");
    std::filesystem::copy_file(tiny_pack("none"), path,
                               std::filesystem::copy_options::overwrite_existing);
    std::string content = directory.read("damaged.so");
    for (std::size_t k = 1; k <= 16; ++k)
      content[k * seed * 7919 % content.size()] = static_cast<char>(k * 37);
    directory.write("damaged.so", content);
    const auto start = std::chrono::steady_clock::now();
    const test::ProgramRun damaged = run("--depth brief --check-limit 1 " + path);
    EXPECT_TRUE(damaged.status >= 0 && damaged.status <= 2) << seed;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(25)) << seed;
  }
}

TEST(Packcheck, is_strict_about_null_when_told_to_be) {
  const std::string selection = "--only result --function reverse ";
  EXPECT_EQ(check(selection + test::kPackFile).status, 0);
  const Report strict = check("--strict " + selection + test::kPackFile);
  ASSERT_EQ(strict.findings.size(), 1u);
  EXPECT_EQ(strict.findings[0]["message"], "gives null");
}

TEST(Packcheck, tells_wrong_usage_and_files_that_are_no_packs) {
  const Directory directory;
  const std::string text = directory.write("text.so", "no library");
  for (const std::string& arguments :
       {std::string(""), std::string("--only nothing x"), std::string("/nonexistent.so"), text,
        "--function nothing " + tiny_pack("none")}) {
    const test::ProgramRun program = run(arguments);
    EXPECT_EQ(program.status, 2) << arguments;
    EXPECT_EQ(program.out, "") << arguments;
    EXPECT_NE(program.err, "") << arguments;
  }
  // A library that is no pack lacks what a host looks for.
  EXPECT_TRUE(check(test::kNoPackFile).checks().contains("exports"));
}

TEST(Packcheck, lists_its_checks) {
  const auto lines = run("--list --json").json();
  std::set<std::string> names;
  for (const Json& line : lines) names.insert(line["name"].get<std::string>());
  EXPECT_EQ(names.size(), lines.size());
  // Every check has a pack here that it finds out.
  std::set<std::string> proven;
  for (const Case& c : kCases) proven.insert(c.checks.begin(), c.checks.end());
  EXPECT_EQ(proven, names);
}

}  // namespace
