// How far results can be trusted: what each output says of it.
#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/host/sheet.hpp"

using namespace test;

namespace {

class Audit : public InSheet {};

constexpr const char* kWrong = "rref([0.1, 0.7, 0.3; 0.3, 2.1, 0.9]*1000)";

TEST_F(Audit, TextTellsWarningsWithTheirCallAndNotesInALine) {
  EXPECT_EQ(sheet.shown(std::string("x = 2 * ") + kWrong),
            "x = 2 x 3 matrix\n  2  0  6\n  0  2  0\n"
            "! rref: 2 pivots taken, the singular values say rank 1\n"
            "    1 | x = 2 * rref([0.1, 0.7, 0.3; 0.3, 2.1, 0.9]*1000)\n"
            "                ^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^\n");
  EXPECT_EQ(sheet.shown("TOL = 0.5\ngeninv([1, 0; 0, 0.1])"),
            "2 x 2 matrix\n  1  0\n  0  0\n"
            "note: geninv: 1 of 2 singular values are above TOL, and those left out are more than "
            "rounding\n");
  // The default counts as well, once it was assigned.
  EXPECT_EQ(sheet.shown("TOL = 1e-9\ngeninv([1, 0; 0, 1e-10])").find('!'), std::string::npos);
}

TEST_F(Audit, JsonHasAnEntryForEachCallThatWasChecked) {
  const Json trust = sheet.run("y = norm1([1, 2; 3, 4]) + norme([3, 4; 0, 0]*1e-170) + rows([1])")
                         .back()
                         .at("trust");
  ASSERT_EQ(trust.size(), 2u);
  EXPECT_EQ(trust[0], Json::parse(R"({"function":"norm1","digits":15.0,"level":"ok",
    "text":"about 15 digits hold","line":1,"column":5,"times":1})"));
  EXPECT_EQ(trust[1]["level"], "warning");
  EXPECT_EQ(trust[1]["column"], 27);
  EXPECT_FALSE(sheet.run("rows([1, 2])").back().contains("trust"));
}

// Calls from functions that a pack calls back are not checked; those of one place are told once.
TEST_F(Audit, APlaceIsToldOnceAndCallsBackAreNotChecked) {
  sheet.run("bad(s) = norme([3, 4; 0, 0]*s)\nback(i, j) = bad(1e-170)");
  EXPECT_FALSE(sheet.run("matrix(2, 2, back)").back().contains("trust"));
  const Json trust = sheet.run("[bad(1), bad(1e-170), bad(1e-170)]").back().at("trust");
  ASSERT_EQ(trust.size(), 1u);
  EXPECT_EQ(trust[0]["times"], 3);
  EXPECT_EQ(trust[0]["text"], "no digit holds: squares left the range of numbers (2 of 3 calls)");
}

TEST_F(Audit, APlaceInALoopIsToldOnceAndDigitsWorkInFunctionsAndBlocks) {
  const Json trust =
      sheet.run("s(k) = 1e-170^k\nfor k = 0:3\n  x = norme([3, 4; 0, 0]*s(k)) + norm1([k])\nend")
          .back()
          .at("trust");
  ASSERT_EQ(trust.size(), 2u);
  EXPECT_EQ(trust[0]["times"], 4);
  EXPECT_EQ(trust[0]["line"], 3);
  EXPECT_EQ(trust[0]["text"], "no digit holds: squares left the range of numbers (1 of 4 calls)");
  EXPECT_EQ(trust[1]["level"], "ok");
  sheet.run("d(k) = digits(norme([3, 4; 0, 0]*s(k)))");
  const auto outcomes =
      sheet.run("q = 7; for k = 0:1\n  q = q + (k + 1)*d(k) + 100*digits(norm1([k]))\nend");
  EXPECT_FALSE(outcomes.back().contains("trust"));
  expect({{"q", "3022"}, {"[d(0), d(1)]", "[15 0]"}});
}

// A failure that the size of the elements brings about says so; others do not.
TEST_F(Audit, AMessageThatScalingAvoidsHasANote) {
  EXPECT_EQ(sheet.shown("eigenvals([1, 2, 3; 4, 5, 6; 7, 8, 10]*1e-165)"),
            "error: too many iterations\n"
            "    1 | eigenvals([1, 2, 3; 4, 5, 6; 7, 8, 10]*1e-165)\n"
            "        ^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^\n"
            "note: eigenvals: times about 1e+164, near 1, the matrix has a result\n");
  EXPECT_FALSE(sheet.run("[1, 2; 2, 4]^-1").back().contains("trust"));
  EXPECT_FALSE(sheet.run("([1, 2; 2, 4]*1e-100)^-1").back().contains("trust"));
}

TEST_F(Audit, DigitsIsANumberWhateverTheEffort) {
  sheet.machine().trust.effort = audit::Effort::off;
  expect({{"digits(norme([3, 4; 0, 0]))", "15"},
          {"digits(1 + norme([3, 4; 0, 0]*1e-170))", "0"},
          {"digits(digits(norm1([1])) + norm1([2]))", "15"},
          {"digits(2)", "error: no call in it is checked (0, 0)"}});
  sheet.run(kWrong);
  EXPECT_FALSE(sheet.run(kWrong).back().contains("trust"));
  expect({{"digits(x) = x + 1\ndigits(norm1([2]))", "3"}});
}

TEST(AuditProgram, TheOptionAndTheReport) {
  const Directory directory;
  EXPECT_EQ(run_program({"--audit=off", "-e", kWrong}).out.find('!'), std::string::npos);
  const std::string page = directory.path("page.html");
  const ProgramRun run = run_program({"--html", page, "-"}, std::string(kWrong) + "\nnorm1([1])\n");
  EXPECT_EQ(run.status, 0);
  const std::string html = directory.read("page.html");
  EXPECT_NE(html.find("<code>rref</code>: 2 pivots taken"), std::string::npos);
  EXPECT_NE(html.find("2 results checked, 1 with a note."), std::string::npos);
  EXPECT_EQ(run_program({"--audit=much", "-e", "1"}).status, 2);
}

// Calls with the digits that their results have in truth, worked out with 400 bits by tools/trust.
TEST_F(Audit, WrongResultsOfTheCorpusAreSeenAndRightOnesSeldomDoubted) {
  std::ifstream corpus(MATRIX_SOURCE_DIR "/tests/data/trust.tsv");
  int wrong = 0, seen = 0, right = 0, doubted = 0;
  double digits = 0.0;
  for (std::string line; corpus >> digits && std::getline(corpus >> std::ws, line);) {
    const Json outcome = sheet.run(line).back();
    ASSERT_TRUE(outcome.contains("trust")) << line;
    const Json told = outcome["trust"][0]["digits"];
    const bool warned = told.is_number() && told < 6.0;
    (digits < 6.0 ? wrong : right) += 1;
    if (warned) (digits < 6.0 ? seen : doubted) += 1;
    if (digits < 6.0) {
      EXPECT_TRUE(warned) << outcome;
    }
  }
  EXPECT_GE(wrong, 60);
  EXPECT_EQ(seen, wrong);
  EXPECT_GE(right, 150);
  EXPECT_EQ(doubted, 0);
}

}  // namespace
