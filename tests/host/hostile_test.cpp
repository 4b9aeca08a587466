// Worksheets that mean harm: what the program says of each, and that it goes on. The test itself
// sets what the system lets the program have.
#include "fmt/format.h"
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

constexpr rlim_t kMiB = rlim_t{1} << 20;

std::string repeated(const std::string& piece, int count) {
  std::string text;
  for (int k = 0; k < count; ++k) text += piece;
  return text;
}

struct Case {
  const char* name;
  std::string sheet;
  const char* said;  // Somewhere in what the program prints on either output.
  int status = 1;
  Limits limits = {};
  std::vector<std::string> arguments = {};
};

// A statement behind each sheet shows that the program goes on.
constexpr const char* kLast = "\n\"the end\"\n";

// The sanitizers want addresses and stack of their own.
constexpr bool is_sanitized() {
#if defined(__SANITIZE_ADDRESS__)
  return true;
#else
  return false;
#endif
}

void expect(const Case& c) {
  SCOPED_TRACE(c.name);
  const bool limited = c.limits.memory != RLIM_INFINITY || c.limits.stack != RLIM_INFINITY;
  if (is_sanitized() && limited) return;
  std::vector<std::string> arguments = c.arguments;
  arguments.emplace_back("-");
  const ProgramRun run =
      run_program(arguments, c.sheet + kLast, "/nonexistent/packs.json", c.limits);
  const std::string printed = run.out + run.err;
  const std::size_t size = printed.size();
  EXPECT_EQ(run.status, c.status) << printed.substr(0, 500);
  EXPECT_NE(printed.find(c.said), std::string::npos) << printed.substr(0, 500);
  EXPECT_NE(run.out.find("the end", size < 200 ? 0 : size - 200), std::string::npos)
      << printed.substr(size < 500 ? 0 : size - 500);
}

TEST(Hostile, Sheets) {
  const Case cases[] = {
      {"brackets in a text", "x = [\")))" + repeated(")", 100000) + "\", \"(((\"]", "nested array",
       0},
      {"101 brackets in a text", "\"" + repeated("(", 101) + "\"", "(((", 0},
      {"brackets", repeated("(", 20000), "column 101: brackets are nested too deeply"},
      {"mixed brackets", "x = " + repeated("[sin((1)[", 40), "brackets are nested too deeply"},
      {"a tower", "x = " + repeated("1^", 100000) + "1", "x = 1", 0},
      {"transposes", "A = [1, 2]\nB = A" + repeated("'", 1000000) + "[0, 1]", "B = 2", 0},
      {"indices", "A = [1, 2]\nA" + repeated("[0]", 100000), "a number has no elements"},
      {"units", "x = 1" + repeated("{m}", 100000), "it has a unit already: m"},
      {"a unit", "x = 1{" + repeated("m ", 501) + "}", "the unit is too long"},
      {"names on the left", repeated("a, ", 100000) + "b = 1", "a is twice on the left"},
      {"recursion on a small stack",
       "f(n) = f(n + 1) + 1\nf(0)",
       "calls are nested too deeply",
       1,
       {.stack = 64 << 10}},
      {"brackets on a small stack",
       repeated("sin(", 100) + "1" + repeated(")", 100),
       "brackets are nested too deeply",
       1,
       {.stack = 64 << 10}},
  };
  for (const Case& c : cases) expect(c);
}

}  // namespace
