// Variables that outlive their session: --save and --load.
#include "host/worksheet/state/state.hpp"

#include "fmt/format.h"
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

// What one session keeps another one has: values bit for bit, units, parts, functions; and it would
// keep the same.
TEST(State, GoesOnWhereAnotherSessionEnded) {
  Sheet first, second;
  first.run(
      "A = [1, -0; 1/3, 2^-1074]{kN/m}\nz = 3-2i\nC = [sqrt(-1)/0, 1/0; 2i, -1/0]\n"
      "B = [1, \"a \\\"b\\\"\"; [2, [3]], A*1{m/kN}]\nL = lean([0, 0])\nW = with_imag([1, 2])\n"
      "f(i) = g(i) + ORIGIN\ng(x) = x^2  # later\nP = lu([4, 1; 2, 3])\nORIGIN = 1\n"
      "I = 10{V}/2{kOhm}\nJ = I in {uA}");
  const std::string text = worksheet::state_text(first.machine());
  worksheet::load_state(second.machine(), text);
  for (const char* name : {"A", "z", "C", "B", "L", "W", "P", "ORIGIN", "TOL", "I", "J", "J*2"})
    EXPECT_EQ(second.value(name), first.value(name)) << name;
  EXPECT_EQ(second.brief("f(3)"), "10");
  first.run("a, b, c = P");
  second.run("a, b, c = P");
  EXPECT_EQ(second.member(""), first.member(""));
  Sheet third;
  worksheet::load_state(third.machine(), text);
  EXPECT_EQ(worksheet::state_text(third.machine()), text);
}

std::string state_of(const std::string& name, const std::string& value,
                     const std::string& source = "") {
  return fmt::format(
      R"({{"worksheet_state":1,"unit_origins":{{}},"variables":[{{"line":1,"source":"{}","name":"{}","value":{}}}]}})",
      source, name, value);
}

std::string matrix(const std::string& members) {
  return state_of("A", R"({"kind":"matrix",)" + members + "}");
}

TEST(State, OfStrangers) {
  const std::string nested = R"({"kind":"matrix","rows":1,"cols":1,"im":null,"re":[)";
  std::string deep = "1", inner = "]}";
  for (int k = 0; k < 110; ++k) deep = nested + deep + inner;
  const std::pair<std::string, std::string> cases[] = {
      {"", "is no JSON from byte 1 on"},
      {"[1, 2", "is no JSON from byte 6 on"},
      {"[1e999]", "holds a number that is too large"},
      {"[]", "is no state of a worksheet"},
      {R"({"worksheet_state":2})", "is the state of a newer program"},
      {R"({"worksheet_state":1})", "\"unit_origins\" is missing or wrong"},
      {R"({"worksheet_state":1,"unit_origins":{},"variables":[3]})",
       "\"name\" is missing or wrong"},
      {std::string(100000, '['), "values are nested more than 100 deep"},
      {state_of("A", deep), "values are nested more than 100 deep"},
      {state_of("2", R"({"kind":"none"})"), "\"2\" is no name"},
      {state_of("a, b", R"({"kind":"none"})"), "\"a, b\" is no name"},
      {state_of("f(x)", R"({"kind":"none"})"), "\"f(x)\" is no name"},
      {state_of("A", "null"), "A: \"value\" is missing or wrong"},
      {state_of("A", R"({"kind":"error","message":"x"})"), "A: the kind \"error\" is no value"},
      {state_of("A", R"({"kind":"scalar","re":"x","im":0})"), "A: a number is missing or wrong"},
      {state_of("A", R"({"kind":"scalar","re":1,"im":0,"unit":"m^"})"), "A: \"m^\" is no unit"},
      {state_of("ORIGIN", R"({"kind":"string","text":"0"})"),
       "ORIGIN: ORIGIN must be a plain real number"},
      {state_of("f", R"({"kind":"function"})", "f = read(1)"),
       "f: the source of a function is no definition"},
      {matrix(R"("rows":1,"cols":1,"re":null,"im":null,"elided":true)"),
       "A: a matrix has been left out"},
      {matrix(R"("rows":2,"cols":1,"re":[1],"im":null)"),
       "A: an array has another length than its matrix"},
      {matrix(R"("rows":-1,"cols":-1,"re":[1],"im":null)"), "A: \"rows\" is missing or wrong"},
      {matrix(R"("rows":1e9,"cols":1,"re":null,"im":null)"), "A: \"rows\" is missing or wrong"},
      {matrix(R"("rows":2147483647,"cols":2147483647,"re":null,"im":null)"),
       "A: a matrix is too large"},
      {matrix(R"("rows":1,"cols":1,"re":null,"im":[{"kind":"none"}])"),
       "A: a number is missing or wrong"},
      {matrix(R"("rows":1,"cols":1,"re":[{"kind":"none"}],"im":null)"),
       "A: a nested value is no value"},
      {matrix(R"("rows":1,"cols":1,"re":[1],"im":null,"parts":[{"kind":"none"}])"),
       "A: \"parts\" is wrong"},
  };
  for (const auto& [text, message] : cases) {
    Sheet sheet;
    try {
      worksheet::load_state(sheet.machine(), text);
      ADD_FAILURE() << "loaded " << text.substr(0, 200);
    } catch (const worksheet::StateError& error) {
      EXPECT_EQ(error.what(), message) << text.substr(0, 200);
    }
  }
}

TEST(State, OfTheProgram) {
  const Directory directory;
  const std::string state = directory.path("s.json"), missing = directory.path("none/s.json");
  EXPECT_EQ(run_program({"--save", state, "-e", "x = 3{mm}", "-e", "y = nix"}).status, 1);
  const ProgramRun next = run_program({"--load", state, "--save", state, "-e", "x = 2 * x"});
  EXPECT_EQ(next.out, "x = 6 mm\n");
  EXPECT_EQ(run_program({"--load", state, "-e", "x"}).out, "6 mm\n");
  const std::string kept = directory.read("s.json");
  std::vector<std::string> endless = {"--save", state, "-e", "A = [1, [2]]"};
  for (int k = 0; k < 60; ++k) endless.insert(endless.end(), {"-e", "A = [A, A]"});
  for (const auto& [arguments, message] :
       std::vector<std::pair<std::vector<std::string>, std::string>>{
           {{"--load", missing, "-e", "1"}, missing + ": cannot be read: no such file"},
           {{"--save", missing, "-e", "1"}, missing + ": cannot be written: no such file"},
           {{"--load", directory.write("x", "{}"), "-e", "1"}, "x: cannot be loaded: is no state"},
           {{"--save", directory.write("y", "1"), directory.path("y")}, "replace the worksheet"},
           {endless, "s.json: cannot be saved: A: the state has more than 16777216 elements"}}) {
    const ProgramRun run = run_program(arguments);
    EXPECT_EQ(run.status, 2) << message;
    EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
  }
  EXPECT_EQ(directory.read("s.json"), kept);
  EXPECT_EQ(directory.names(), (std::vector<std::string>{"s.json", "x", "y"}));
}

}  // namespace
