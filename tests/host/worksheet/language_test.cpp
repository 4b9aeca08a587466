// The worksheet language: statements and their values.
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

using Language = InSheet;

TEST_F(Language, Numbers) {
  expect({
      {"1.5e-3", "0.0015"},
      {".5 + 2.", "2.5"},
      {"2i", "0+2i"},
      {"-2^2", "-4"},
      {"2^3^2", "512"},
      {"- -3", "3"},
      {"1 - 2 - 3", "-4"},
      {"1 + 2 * 3 == 7", "1"},
      {"1/0", "inf"},
      {"0/0", "nan"},
      {"(1+2i) / (1-2i)", "-0.6+0.8i"},
      {"(-8)^3", "-512"},
      {"1e-400", "0"},
      {"(3{m} in {mm}) + 1{m}", "4000 {mm}"},
  });
}

TEST_F(Language, ComplexResultsWhereTheyMakeSense) {
  expect({
      {"sqrt([4, -4])", "[2 0+2i complex]"},
      {"abs(3+4i)", "5"},
      {"(1+1i)^2", "0+2i"},
      {"(-4)^0.5 == 2i", "0"},
      {"im(log(-1)) == pi", "1"},
      {"abs(exp(1i*pi) + 1) < 1e-15", "1"},
      {"conj(1+2i)", "1-2i"},
      {"mod(-7, 3)", "2"},
      {"mod(7, -3)", "-2"},
      {"floor(-1.5)", "-2"},
      {"floor(1i)", "error: must be real (0, 0)"},
      {"1i < 2", "error: complex numbers have no order (0, 0)"},
  });
}

TEST_F(Language, Matrices) {
  expect({
      {"[1i * 0, 1]", "[0 1]"},
      {"[1, 2; 3, 4]'", "[1 3; 2 4]"},
      {"[1, 2; 3, 4] * [1; 1]", "[3; 7]"},
      {"[1i, 2] * [1i; 1]", "[1]"},
      {"[1, 2] + 1", "[2 3]"},
      {"2 .^ [1, 2]", "[2 4]"},
      {"[1, 2] < [2, 1]", "[1 0]"},
      {"[1, 1; 0, 1]^5", "[1 5; 0 1]"},
      {"[1, 1; 0, 1]^0", "[1 0; 0 1]"},
      {"[1, 2] + [1; 2]", "error: '+' needs equal shapes, not 1 x 2 and 2 x 1 (0, 0)"},
      {"[1, 2] * [1, 2]",
       "error: cannot multiply 1 x 2 by 1 x 2: the columns of the first are not as many as the "
       "rows of the second (0, 0)"},
      {"[1, 2; 3, 4]^0.5",
       "error: the power of a matrix must be an integer; '.^' works element by element (0, 0)"},
      {"with_imag([1, 2])", "[1 2 complex]"},
      {"real_only([1i, 2])", "[0 2]"},
      {"lean([0, 0])", "[0 0 lean]"},
      {"lean([1i])", "[0+1i imaginary complex]"},
      {"reverse(lean([0; 0]))", "none"},
      {"x = reverse(lean([0; 0]))\nrows(x)", "error: the argument has no value (0, 0)"},
  });
}

TEST_F(Language, Indices) {
  expect({
      {"A = [1, 2; 3, 4]\nA[1, 0]", "3"},
      {"v = [5; 6]\nv[1]", "6"},
      {"[7, 8, 9][2]", "9"},
      {"A[2, 0]", "error: index 2 is outside of 0 to 1 (0, 0)"},
      {"A[0.5, 0]", "error: an index must be an integer (0, 0)"},
      {"A[1]", "error: a 2 x 2 matrix needs two indices (0, 0)"},
      {"ORIGIN = 1\nA[2, 1]", "3"},
      {"A[0, 1]", "error: index 0 is outside of 1 to 2 (0, 0)"},
      {"last(v)", "2"},
      {"ORIGIN = [1, 2]", "error: ORIGIN must be a plain real number (0, 0)"},
      {"ORIGIN = 1{m}", "error: ORIGIN must be a plain real number (0, 0)"},
      {"Q, ORIGIN = qr([1])", "error: ORIGIN must be a plain real number (0, 0)"},
      {"ORIGIN(i) = i", "error: ORIGIN must be a plain real number (0, 0)"},
      {"last(v)", "2"},
      {"3[0]", "error: a number has no elements (0, 0)"},
  });
}

TEST_F(Language, NestedArrays) {
  expect({
      {"N = [[1, 2], \"text\"; 3, 4i]", "[[1 2] \"text\"; 3 0+4i complex]"},
      {"N[0, 0][1]", "2"},
      {"N + 1", "error: '+' does not take a nested array (0, 0)"},
      {"N'", "[[1 2] 3; \"text\" 0+4i complex]"},
      {"submatrix(N, 0, 0, 0, 0)[0]", "[1 2]"},
      {"min([[1], 2])", "error: may not be nested (0, 1)"},
      {"[[1], 2; 3, 4]^-1", "error: may not be nested (0, 0)"},
      {"[[1], 2; 3, 4]^2", "error: a nested array has no power (0, 0)"},
      {"sqrt(N)", "error: may not be nested (0, 0)"},
      {"[[[1, 2], 3], \"deep\"]", "[[[1 2] 3] \"deep\"]"},
  });
}

TEST_F(Language, Functions) {
  expect({
      {"f(x, y) = x - 2*y\nf(7, 2)", "3"},
      {"f(1)", "error: f takes 2 arguments, not 1 (0, 0)"},
      {"g(h, x) = h(x, 1) + h(1, x)\ng(f, 5)", "-6"},
      {"fact(n) = if(n <= 1, 1, n*fact(n - 1))\nfact(20)", "2.43290200817664e+18"},
      {"matrix(2, 3, f)", "[0 -2 -4; 1 -1 -3]"},
      {"later(x) = x + unknown\nlater(1)", "error: unknown name: unknown (0, 0)"},
      {"unknown = 2\nlater(1)", "3"},
      {"if(0, nonsense, 4)", "4"},
      {"c(i, j) = i + j*1i\nmatrix(2, 2, c)", "[0 0+1i; 1 1+1i complex]"},
      {"m(i, j) = rows(matrix(i + 1, j + 1, f))\nmatrix(2, 2, m)", "[1 1; 2 2]"},
      {"one(x) = x\nmatrix(2, 2, one)", "error: one takes 1 argument, not 2 (0, 3)"},
      {"e(i, j) = foo(i)\nmatrix(2, 2, e)", "error: unknown name: foo (0, 3)"},
      {"f = 3\nf(1)", "error: f is a number, not a function (0, 0)"},
      {"rows = 5\nrows([1; 2])", "2"},
      {"nothing(1)", "error: unknown name: nothing (0, 0)"},
      {"sqrt(1, 2)", "error: sqrt takes 1 argument, not 2 (0, 0)"},
      {"rows()", "error: rows takes 1 argument, not 0 (0, 0)"},
  });
}

TEST_F(Language, SyntaxErrorsSayWhatAndWhere) {
  expect({
      {"1 +", "syntax: expected an operand (column 4)"},
      {"(1 + 2", "syntax: expected ')' (column 7)"},
      {"  [1, 2; 3]", "syntax: this row has length 1, the first one 2 (column 10)"},
      {"[]", "syntax: expected an element (column 2)"},
      {"x = = 3", "syntax: expected an expression (column 5)"},
      {"2x", "syntax: a number ends in a letter (column 2)"},
      {"1e", "syntax: expected the digits of an exponent (column 3)"},
      {"\"abc", "syntax: expected '\"' at the end of the text (column 5)"},
      {"3 $ 4", "syntax: unexpected text (column 3)"},
      {"λ = 3 $", "syntax: unexpected text (column 7)"},
      {"if(1, 2)", "syntax: if takes a condition and two expressions (column 1)"},
      {"f(x, x) = 1", "syntax: x is twice among the parameters (column 6)"},
      {"a, a = lu(1)", "syntax: a is twice on the left (column 4)"},
      {"1e999", "syntax: the number is too large (column 1)"},
      {"3{kN", "syntax: expected '}' (column 5)"},
      {"(1 in m)", "syntax: expected a unit in braces (column 7)"},
      {"2 * -", "syntax: expected an operand (column 5)"},
      {"2 ^ -", "syntax: expected an exponent (column 6)"},
      {"f(,)", "syntax: expected ')' (column 3)"},
      {"a, b = 1, 2", "syntax: unexpected text (column 9)"},
  });
}

// A forgotten bracket must not swallow the rest of the sheet.
TEST_F(Language, ASheetGoesOnBehindASyntaxError) {
  sheet.run(
      "a = 1  # a comment with a ( bracket\nb = (2 +\n     3) * 2\nc = (4 + 1\n"
      "d = [1, 2;   # the first row\n     3, 4]\ne = (d[0, 0]\n\"a # b\"");
  EXPECT_EQ(sheet.briefs(),
            "1: 1\n2: 10\n4: syntax: expected ')' (column 11)\n5: [1 2; 3 4]\n"
            "7: syntax: expected ')' (column 13)\n8: \"a # b\"\n");
}

TEST_F(Language, NestingIsBounded) {
  const std::string deep(100000, '(');
  EXPECT_EQ(sheet.brief(deep + "1"), "syntax: brackets are nested too deeply (column 101)");
  EXPECT_EQ(sheet.brief(std::string(100, '(') + "1" + std::string(100, ')')), "1");
  EXPECT_EQ(sheet.brief(std::string(100001, '-') + "1"), "-1");
  std::string sum = "1", tower = "1";
  for (int k = 0; k < 20000; ++k) sum += "+1";
  for (int k = 0; k < 100; ++k) tower += "^1";
  EXPECT_EQ(sheet.brief(sum), "20001");
  EXPECT_EQ(sheet.brief(tower), "1");
  EXPECT_EQ(sheet.brief("f(n) = f(n + 1) + 1\nf(0)"), "error: calls are nested too deeply (0, 0)");
  EXPECT_EQ(sheet.brief("g(i, j) = matrix(1, 1, g)[0, 0]\nmatrix(1, 1, g)"),
            "error: calls are nested too deeply (0, 3)");
  EXPECT_EQ(sheet.brief("1 + 1"), "2");
  // Values may be nested more deeply than expressions, and shared.
  sheet.run("nest(n) = if(n == 0, 1, [nest(n - 1), \"t\"])\nnest(1000)");
  EXPECT_EQ(sheet.member("/value/rows"), "1");
  std::string doubling = "[\"t\", 1]";
  for (int k = 0; k < 30; ++k) doubling = "d(" + doubling + ")";
  sheet.run("d(x) = [x, x]");
  EXPECT_LT(sheet.value(doubling).size(), 100000000u);
}

TEST_F(Language, ShownForPeople) {
  EXPECT_EQ(sheet.shown("A = [1, -2.5; 100, 1e-7]"),
            "A = 2 x 2 matrix\n    1  -2.5\n  100   1e-07\n");
  EXPECT_EQ(sheet.shown("1 - 2i"), "1 - 2i\n");
  EXPECT_EQ(sheet.shown("z = 0*1i"), "z = 0\n");
  EXPECT_EQ(sheet.shown("f(x) = x"), "");
  EXPECT_EQ(sheet.shown("x = 2\nrank(x, A)"),
            "error: rank takes 1 argument, not 2\n    2 | rank(x, A)\n        ^^^^^^^^^^\n");
  EXPECT_EQ(sheet.shown("augment(A,\n  3)"), "error: must be array\n    2 |   3)\n          ^\n");
  // An error inside a function is shown there.
  EXPECT_EQ(sheet.shown("tr2(a) = tr(a)\ntr2(5)"),
            "error: must be array\n    2 | tr2(5)\n        ^\n"
            "    1 | tr2(a) = tr(a)\n                    ^\n");
  EXPECT_EQ(sheet.shown("augment(A,\r\n\t3)\r"), "error: must be array\n    2 |  3)\n         ^\n");
  const std::string blanks(500, ' ');
  EXPECT_EQ(sheet.shown("augment(A, " + blanks + "3" + blanks + ")"),
            "error: must be array\n    1 | ..." + blanks.substr(0, 43) + "3" +
                blanks.substr(0, 42) + "...\n" + blanks.substr(0, 54) + "^\n");
}

TEST_F(Language, MatricesAreAlignedAndElided) {
  EXPECT_EQ(sheet.shown("[1 + 1i; -1.5 - 20.25i; 3i; 40]"),
            "4 x 1 matrix\n   1    + 1i\n  -1.5 - 20.25i\n          3i\n  40\n");
  EXPECT_EQ(sheet.shown("[0.5, \"λ\"; 1/0, [1, 2]]"),
            "2 x 2 nested array\n    0.5             \"λ\"\n  inf    [1 x 2 matrix]\n");
  EXPECT_EQ(sheet.shown("L, D = qr([2])"), "L = 1 x 1 matrix\n  1\nD = 1 x 1 matrix\n  2\n");
  // Of four columns too wide for the line, the first and the last.
  EXPECT_EQ(sheet.shown("[1, 2, 3, 4] * (1 + 1i)/700000"),
            "1 x 4 matrix, 2 columns shown\n"
            "  1.42857e-06 + 1.42857e-06i  ...  5.71429e-06 + 5.71429e-06i\n");
  auto first_and_last = [](const std::string& text) {
    return text.substr(0, text.find('\n')) + text.substr(text.rfind("..."));
  };
  EXPECT_EQ(
      first_and_last(sheet.shown("f(i, j) = i\nmatrix(100, 1, f)")),
      "100 x 1 matrix, 24 rows shown...\n   88\n   89\n   90\n   91\n   92\n   93\n   94\n   95\n"
      "   96\n   97\n   98\n   99\n");
  EXPECT_EQ(sheet.shown("matrix(25, 1, f)").find("..."), std::string::npos) << "it would hide one";
  const std::string wide = sheet.shown("matrix(100, 200, f)");
  EXPECT_TRUE(wide.starts_with("100 x 200 matrix, 24 rows and 19 columns shown\n")) << wide;
  worksheet::DisplayOptions options;
  options.all = true;
  EXPECT_EQ(sheet.shown("matrix(1, 200, f)", options).size(), 600u + sizeof "1 x 200 matrix\n");
}

// Values that nothing refers to are reclaimed while a statement runs, not only behind it.
TEST_F(Language, LongEvaluationsDoNotGather) {
  EXPECT_EQ(sheet.brief("A = [1, 2; 3, 4]\n"
                        "f(i, j) = tr(A * A') + rows(A + [i, j; j, i])\n"
                        "B = matrix(200, 200, f)\nB[199, 199]"),
            "32");
  EXPECT_LT(sheet.machine().store.size(), 20u);
  EXPECT_EQ(sheet.brief("fib(n) = if(n < 2, n, fib(n - 1) + fib(n - 2)*rows([1]))\nfib(20)"),
            "6765");
  EXPECT_LT(sheet.machine().store.size(), 20u);
}

}  // namespace
