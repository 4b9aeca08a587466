// Worksheets that mean harm: what the program says of each, and that it goes on. The test itself
// sets what the system lets the program have.
#include "fmt/format.h"
#include "tests/host/sheet.hpp"
#include "tests/support/sanitized.hpp"

using namespace test;

namespace {

constexpr rlim_t kMiB = rlim_t{1} << 20;

std::string repeated(const std::string& piece, int count) {
  std::string text;
  for (int k = 0; k < count; ++k) text += piece;
  return text;
}

struct HostileCase {
  const char* name;
  std::string sheet;
  std::string said;  // Somewhere in what the program prints on either output.
  int status = 1;
  Limits limits = {};
  std::vector<std::string> arguments = {};
};

// A statement behind each sheet shows that the program goes on.
constexpr const char* kLast = "\n\"the end\"\n";

void expect(const HostileCase& c) {
  SCOPED_TRACE(c.name);
  const bool limited = c.limits.memory != RLIM_INFINITY || c.limits.stack != RLIM_INFINITY;
  if (kSanitized && limited) return;
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

TEST(Hostile, Nesting) {
  const Limits small_stack = {.stack = 64 << 10};
  const HostileCase cases[] = {
      {"brackets in a text", "x = [\")))" + repeated(")", 100000) + "\", \"(((\"]", "nested array",
       0},
      {"101 brackets in a text", "\"" + repeated("(", 101) + "\"", "(((", 0},
      {"brackets", repeated("(", 20000), "column 101: brackets are nested too deeply"},
      {"mixed brackets", "x = " + repeated("[sin((1)[", 40), "brackets are nested too deeply"},
      {"a tower", "x = " + repeated("1^", 100000) + "1", "x = 1", 0},
      {"transposes", "A = [1, 2]\nB = A" + repeated("'", trials(1000000)) + "[0, 1]", "B = 2", 0},
      {"indices", "A = [1, 2]\nA" + repeated("[0]", 100000), "a number has no elements"},
      {"units", "x = 1" + repeated("{m}", 100000), "it has a unit already: m"},
      {"a unit", "x = 1{" + repeated("m ", 501) + "}", "the unit is too long"},
      {"names on the left", repeated("a, ", 100000) + "b = 1", "a is twice on the left"},
      {"recursion", "f(n) = f(n + 1) + 1\nf(0)", "calls are nested too deeply", 1, small_stack},
      {"brackets on a small stack", repeated("sin(", 100) + "1" + repeated(")", 100),
       "brackets are nested too deeply", 1, small_stack},
      {"nested values on a small stack",
       "A = [1, \"t\"]\n" + repeated("A = [A]\n", 300),
       "end",
       0,
       small_stack,
       {"--json"}},
  };
  for (const HostileCase& c : cases) expect(c);
}

// As many lines and bytes as these take their time in proportion only.
TEST(Hostile, Length) {
  const Limits little = {.memory = 256 * kMiB, .seconds = 20};
  const Limits quick = {.seconds = kSanitized ? 100u : 20u};
  const int last = trials(30000);
  std::string variables, lines;
  for (int k = 0; k <= last; ++k) variables += fmt::format("A{} = [1, 2; 3, {}]\n", k, k);
  for (int k = 0; k <= last; ++k) lines += fmt::format("x = {}\n", k);
  const HostileCase cases[] = {
      {"a line of 30 MB", "x = [" + repeated("1, ", 10 << 20) + "1]\ny = 2", "longer than 4 MiB", 1,
       little},
      {"a statement of 30 MB", "x = [\n" + repeated("1, 2, 3;\n", 3 << 20) + "1, 2, 3]\ny = 2",
       "longer than 4 MiB", 1, little},
      {"a comment of 30 MB", "# " + std::string(30 << 20, 'x'), "the end", 0, little},
      {"a long sum", "A = identity(1000)\nB = A" + repeated(" + A", 60) + "\nB[0, 0]", "= 61", 0,
       little},
      {"open brackets", repeated("(\n", 20000), "20000 | (", 1, quick},
      {"brackets that cross lines", "(\n" + repeated(")(\n", 20000), "20001 | )(", 1, quick},
      {"variables", variables, fmt::format("A{} = 2 x 2 matrix", last), 0, quick},
      {"lines", lines, fmt::format("x = {}", last), 0, quick},
      {"a variable that changes", "A = identity(500)\n" + repeated("A = A + 1\n", 200), "201", 0,
       little},
  };
  for (const HostileCase& c : cases) expect(c);
}

TEST(Hostile, Loops) {
  const Directory directory;
  const Limits little = {.memory = 256 * kMiB};
  const std::vector<std::string> briefly = {"--timeout", "0.3"};
  const HostileCase cases[] = {
      {"blocks", repeated("if 1\n", 20000) + repeated("end\n", 20000),
       "blocks are nested too deeply"},
      {"no end", "while 1; end", "takes longer than", 1, {}, briefly},
      {"no end within", "while 1\n for k = 1:1e15; x = [k, k]; y = x; y[0] = 1; end\nend",
       "takes longer than", 1, little, briefly},
      {"a long range", "v = 0:1e12", "memory exhausted", 1, little},
      {"a loop through what changes",
       "v = 0*(1:1000);\nfor x = v\n v[:] = v[:] + 1\n w = v\nend\nw[0]", "w[0] = 1000", 0, little},
      {"growing nested values", "N = [1, \"t\"]\nfor k = 1:300\n N = [N]\nend", "the end", 0,
       little},
      {"notes without end",
       "for k = 1:1000\n write(\"" + directory.path("n.csv") + "\", [k])\nend",
       "further notes are left out",
       0,
       {.file_size = kMiB}},
      {"prefixes", "x = " + repeated("-!", 100000) + "1", "x = ", 0},
      {"names in a body", "f(x) = (" + repeated("t = x; ", 200) + "t)",
       "too many names in the body of a function"},
  };
  for (const HostileCase& c : cases) expect(c);
}

TEST(Hostile, Size) {
  const Directory directory;
  const std::string page = directory.path("page.html");
  const std::string doubled = "A = [1, 2]\n" + repeated("A = [A, A]\n", 60);
  const std::string texts = "t = \"" + std::string(100000, 'x') + "\"\nA = [" +
                            repeated("t, ", 1000) + "t]\nB = [A; A; A]";
  const Limits small_files = {.file_size = 12 * kMiB};
  const Limits little = {.memory = 256 * kMiB};
  const HostileCase cases[] = {
      {"doubled arrays", doubled, "A = 1 x 2 nested array", 0, {.file_size = kMiB}},
      {"doubled arrays in JSON",
       doubled,
       R"("re":null,"im":null,"elided":true)",
       0,
       small_files,
       {"--json"}},
      {"doubled arrays on a page", doubled, "", 0, small_files, {"--html", page}},
      {"texts", texts, "xxx...\"", 0, {.file_size = kMiB}},
      {"texts in JSON",
       texts,
       R"("cols":1001,"re":null,"im":null,"elided":true)",
       0,
       small_files,
       {"--json"}},
      {"texts on a page", texts, "", 0, small_files, {"--html", page}},
      {"more than there is memory for", "identity(30000)\nA = identity(5000)\nB = A + A",
       "B = A + A", 1, little},
      {"the same in JSON",
       "A = identity(5000)\nB = A + A",
       "memory exhausted",
       1,
       little,
       {"--json"}},
      {"all of a large matrix in JSON",
       "A = identity(1500) * 1.5",
       "0.0,0.0,1.5],\"im\":null}}",
       0,
       {.memory = 128 * kMiB},
       {"--json", "--all"}},
      {"all of a wide matrix",
       "f(i, j) = 0.5\nA = matrix(1, 1000000, f)",
       "0.5  0.5",
       0,
       {.memory = 160 * kMiB},
       {"--all"}},
  };
  for (const HostileCase& c : cases) expect(c);
}

TEST(Hostile, Text) {
  const Directory directory;
  const std::string picture = directory.path("p.svg");
  const HostileCase cases[] = {
      {"Latin-1", "x = 1\nt = \"M\xFCller\"", "line 2, column 7: this is not text in UTF-8"},
      {"a Latin-1 comment", "# M\xFCller\nx = 1", "line 1, column 4: this is not text in UTF-8"},
      {"a NUL", std::string("x = 1\ny = \"") + '\0' + "\"", "line 2, column 6: this is not text"},
      {"no character", "t = \"\uFFFE\"", "line 1, column 6: this is not text in UTF-8"},
      {"in a long statement", "x = [1,\n2, # \xED\xA0\x80\n3]", "line 2, column 6"},
      {"in JSON",
       "t = \"\xFF\"",
       "t = \\\"\uFFFD\\\"\",\"value\":{\"kind\":\"syntax\"",
       1,
       {},
       {"--json"}},
      {"a byte-order mark", "\uFEFFx = 1", "x = 1", 0},
      {"markup in a picture", "plot(\"" + picture + "\", [1, 2], \"title: ]]></svg>\")", "picture",
       0},
  };
  for (const HostileCase& c : cases) expect(c);
  EXPECT_NE(directory.read("p.svg").find("<text>]]&gt;&lt;/svg></text>"), std::string::npos);
}

}  // namespace
