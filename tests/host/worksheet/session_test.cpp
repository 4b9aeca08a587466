// Statements about the session, and completion.
#include <algorithm>

#include "host/worksheet/session/completion.hpp"
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

using Session = InSheet;

TEST_F(Session, KnowsItsVariables) {
  sheet.run("A = [1, 2; 3, 4]{kN}\nf(x) = x\nwho");
  EXPECT_EQ(sheet.member("/variables/0/value/unit"), "kN");
  EXPECT_EQ(sheet.member("/variables/3/name"), "f");
  EXPECT_EQ(sheet.shown("who"),
            "A       2 x 2 matrix in kN\nORIGIN  number\nTOL     number\nf       f(x)\n");
  expect({{"2 * 21\nA\nans + 1", "43"},  // A variable has a name already.
          {"clear nix", "error: there is no variable nix (0, 0)"},
          {"clear A TOL", "error: TOL cannot be cleared: functions read it (0, 0)"},
          {"clear f\nA", "[1 2; 3 4] {kN}"},
          {"clear\nA", "error: unknown name: A (0, 0)"},
          {"who = 3\nwho", "3"}});
}

TEST_F(Session, IncludesWorksheets) {
  std::filesystem::create_directory(directory.path("lib"));
  directory.write("lib/n.csv", "7\n8\n");
  directory.write("lib/a.ws", "k = read(\"n.csv\")\ng(x) = length(x)\n\ninclude \"b.ws\"\n");
  directory.write("lib/b.ws", "g([1, 2; 3, 4])\ninclude \"b.ws\"\n");
  sheet.run("include \"lib/a.ws\"");
  EXPECT_EQ(sheet.member(4, "/file"), directory.path("lib/b.ws"));
  EXPECT_EQ(sheet.member("/value/message"), directory.path("lib/b.ws") + " includes itself");
  EXPECT_EQ(sheet.shown("g([1, 2; 3, 4])"),
            "error: must be vector\n    1 | g([1, 2; 3, 4])\n        ^\n" +
                directory.path("lib/a.ws") +
                ":\n    2 | g(x) = length(x)\n               ^^^^^^^^^\n");
  expect({{"k[1]", "8"}});
  // Many files that include many end, too.
  std::string twice;
  for (int k = 0; k < 40; ++k) twice += "include \"c" + std::to_string(k) + ".ws\"\n";
  directory.write("d.ws", "1\n");
  for (int k = 0; k < 40; ++k)
    directory.write("c" + std::to_string(k) + ".ws",
                    std::string(k < 20 ? twice : "include \"d.ws\"\n"));
  sheet.run("include \"c0.ws\"");
  EXPECT_EQ(sheet.member(100'000, ""), "");
  sheet.machine().files.confine(directory.path("lib"));
  expect({{"include \"b.ws\"\n1", "1"}});
  EXPECT_NE(sheet.brief("include \"../d.ws\"").find("lies outside"), std::string::npos);
}

TEST_F(Session, StatementsAboutItAreQuietToo) {
  directory.write("inner.ws", "2\nformat fix 2\n");
  directory.write("outer.ws", "1\ninclude \"inner.ws\"\nx = 3\nwho\n");
  sheet.run("include \"outer.ws\";");
  std::size_t k = 0;
  for (; !sheet.member(k, "").empty(); ++k) EXPECT_EQ(sheet.member(k, "/quiet"), "true") << k;
  EXPECT_GT(k, 4u);
  EXPECT_EQ(sheet.shown("who;"), "");
  EXPECT_EQ(sheet.shown("format sci 3;"), "");
  EXPECT_EQ(sheet.shown("x"), "3.00e+00\n");
}

TEST_F(Session, CompletesWhatIsTyped) {
  directory.write("forces.csv", "1\n");
  std::filesystem::create_directory(directory.path("data"));
  sheet.run("stiffness = 1");
  struct Case {
    const char* text;
    std::size_t begin;
    const char* candidate;  // Null: none at all.
  };
  const Case cases[] = {{"x = stiff", 4, "stiffness"},     {"lso", 0, "lsolve"},
                        {"3{kN/m^2} + 2{MP", 14, "MPa"},   {"2{kilom", 2, "kilometer"},
                        {"read(\"fo", 6, "forces.csv"},    {"read(\"", 6, "data/"},
                        {"help oper", 5, "operators"},     {"x # stiff", 3, nullptr},
                        {"\"a\" + stiff", 6, "stiffness"}, {"[1,\n2, stiff", 7, "stiffness"},
                        {"read(\"no/such", 6, nullptr},    {"x = 1; whi", 7, "while"}};
  for (const Case& c : cases) {
    const auto found = worksheet::complete(sheet.machine(), c.text);
    EXPECT_EQ(found.candidates.empty(), c.candidate == nullptr) << c.text;
    if (c.candidate == nullptr) continue;
    EXPECT_EQ(found.begin, c.begin) << c.text;
    EXPECT_EQ(std::count(found.candidates.begin(), found.candidates.end(), c.candidate), 1)
        << c.text;
  }
  sheet.machine().files.confine(directory.path("data"));
  EXPECT_TRUE(worksheet::complete(sheet.machine(), "read(\"../fo").candidates.empty());
}

}  // namespace
