// What is said of names that have no value.
#include "host/text/nearest.hpp"
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

using Mistakes = InSheet;

TEST_F(Mistakes, NamesThatAreNearAreSuggested) {
  sheet.run("force = 3\nstress(x) = x");
  expect({
      {"lsolv([1], [1])", "error: unknown name: lsolv; did you mean lsolve? (0, 0)"},
      {"Sqrt(4)", "error: unknown name: Sqrt; did you mean sqrt? (0, 0)"},
      {"atn(1)", "error: unknown name: atn; did you mean atan or tan? (0, 0)"},
      {"forec + 1", "error: unknown name: forec; did you mean force? (0, 0)"},
      {"FORCE", "error: unknown name: FORCE; did you mean force? (0, 0)"},
      // A variable is no function.
      {"forc(1)", "error: unknown name: forc (0, 0)"},
      {"sterss(1)", "error: unknown name: sterss; did you mean stress? (0, 0)"},
      {"eig([1])", "error: unknown name: eig; did you mean eigenvals(M) or eigenvecs(M)? (0, 0)"},
      {"Inv([1])", "error: unknown name: Inv; did you mean A^-1? (0, 0)"},
      {"E + 1", "error: unknown name: E (0, 0)"},
      {"entirely + other", "error: unknown name: entirely (0, 0)"},
      {"3{newtn}", "syntax: unknown unit: newtn; did you mean newton? (column 3)"},
      {"3{kn} + 2{kN}",
       "error: '+' needs values of one unit: kn and kN; kN and kn are two units (0, 0)"},
  });
}

TEST_F(Mistakes, DistancesAreThoseOfTheAlignment) {
  const std::tuple<const char*, const char*, std::size_t> cases[] = {
      {"", "", 0},      {"abc", "ABC", 0},  {"ab", "ba", 1},
      {"abc", "ac", 1}, {"ca", "abc", 3},   {"kitten", "sitting", 3},
      {"", "abcd", 4},  {"sitting", "", 7}, {"a", "abcdef", 5}};
  for (const auto& [a, b, distance] : cases) {
    EXPECT_EQ(worksheet::edit_distance(a, b, 9), distance) << a << " " << b;
    EXPECT_EQ(worksheet::edit_distance(a, b, 2), std::min<std::size_t>(distance, 2)) << a;
  }
  EXPECT_EQ(worksheet::edit_distance(std::string(41, 'a'), std::string(41, 'a'), 5), 5u);
}

TEST_F(Mistakes, FunctionsAndReservedWordsAreNamedAsSuch) {
  expect({
      {"2 * sqrt",
       "error: sqrt is a function and takes 1 argument in parentheses: help sqrt says more (0, 0)"},
      {"sum",
       "error: sum is a function and takes 1 or 2 arguments in parentheses: help sum says "
       "more (0, 0)"},
      {"lsolve",
       "error: lsolve is a function and takes 2 arguments in parentheses: help lsolve "
       "says more (0, 0)"},
      {"in = 3", "syntax: in is a reserved word (column 1)"},
      {"if = 3", "syntax: if is a reserved word (column 1)"},
  });
}

// The sign may stand at the mistake, half before it, or a word before it.
TEST_F(Mistakes, SignsOfOtherLanguagesBringThoseWrittenHere) {
  expect({
      {"x ~= 3", "syntax: unexpected text; did you mean !=? (column 3)"},
      {"2 ** 3", "syntax: expected an operand; did you mean x^n? (column 4)"},
      {"x === 3", "syntax: expected an operand; did you mean ==? (column 5)"},
      {"x and y", "syntax: unexpected text; did you mean &&? (column 3)"},
      {"x = not y", "syntax: unexpected text; did you mean !x? (column 9)"},
      {"2≠3", "syntax: a number ends in a letter; did you mean !=? (column 2)"},
      {"~", "syntax: expected an expression; did you mean !x? (column 1)"},
      {"-", "syntax: expected an expression (column 1)"},
      {"x andy", "syntax: unexpected text (column 3)"},
      {"[1 2; 3 4]", "syntax: expected ',' between elements (column 4)"},
      {"[1, 2 + 3", "syntax: expected ']' (column 10)"},
  });
}

// The first error stays in sight, and those that follow from it name it.
TEST_F(Mistakes, WhatFollowsFromAFailureNamesIt) {
  sheet.run(
      "b = [1, 2] + [1; 2]\nx = lsolve([2], b)\ny = x + 1\nf(t) = t +\nf(2)\n"
      "g(t) = t + b\nmatrix(1, 1, y) + g(1)\nb = [4]\nlsolve([2], b)");
  const char* const follows[] = {"",
                                 "b has no value: line 1 failed",
                                 "x has no value: line 1 failed",
                                 "",
                                 "f has no value: line 4 failed",
                                 "",
                                 "y has no value: line 1 failed"};
  for (std::size_t k = 0; k < std::size(follows); ++k) {
    const bool caused = *follows[k] != '\0';
    EXPECT_EQ(!sheet.member(k, "/failed_line").empty(), caused) << sheet.member(k, "");
    if (caused) {
      EXPECT_EQ(sheet.member(k, "/value/message"), follows[k]);
    }
  }
  EXPECT_EQ(sheet.member(4, "/failed_line"), "4");
  EXPECT_TRUE(sheet.briefs().ends_with(": [2]\n"));
  EXPECT_EQ(sheet.shown("a = 1 + c\na"), "error: line 2: a has no value: line 1 failed\n");
  // Of a block, what it should have assigned; but not what it did.
  EXPECT_EQ(sheet.shown("if 1\n  p = 1; q = c\n  q[0] = 1\nend\nq"),
            "error: line 5: q has no value: line 2 failed\n");
  EXPECT_EQ(sheet.brief("clear p\np"), "error: unknown name: p (0, 0)");
  EXPECT_EQ(sheet.shown("for r = 1:2\n  s = (2\n  t = 1\nend\nr + t"),
            "error: line 5: r has no value: line 2 failed\n");
  // A failure changes nothing that was there.
  EXPECT_EQ(sheet.brief("b = nothing\nb"), "[4]");
  EXPECT_TRUE(sheet.session().failed());
}

}  // namespace
