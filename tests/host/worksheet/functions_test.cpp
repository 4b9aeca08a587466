// The language's own functions: values, units, and what they refuse.
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

using Functions = InSheet;

// f(g(z)) is z on both sides of the axes and of the cuts, and real where z is within them.
TEST_F(Functions, UndoTheirInverses) {
  sheet.run(
      "z = [0.3, -0.7, 0.2+1.1i, -0.4-0.6i, 2+0.5i, -3+1i, 1.5-2i]\n"
      "near(x) = all(abs(x - z) < 1e-14)");
  for (const char* text :
       {"sin(asin(z))", "cos(acos(z))", "tan(atan(z))", "sinh(asinh(z))", "cosh(acosh(z))",
        "tanh(atanh(z))", "exp(log(z))", "2 .^ log2(z)", "10 .^ log10(z)"})
    EXPECT_EQ(sheet.brief("near(" + std::string(text) + ")"), "1") << text;
}

TEST_F(Functions, OfNumbers) {
  expect({
      {"im(asin(2)) > 0", "1"},
      {"asin(2) + acos(2) == pi/2", "1"},
      {"asin(-1) == -pi/2", "1"},
      {"[log2(8), log10(1000), gamma(5), ceil(1.2), trunc(-1.7)]", "[3 3 24 2 -1]"},
      {"[round(2.5), round(-2.5), sign(-3), sign(0), sign(3+4i) * 5]", "[3 -3 -1 0 3+4i complex]"},
      {"arg([-1, 1i, 0]) / pi", "[1 0.5 0]"},
      {"atan2([1; -1]{m}, [-100; -100]{cm}) * 4/pi", "[3; -3]"},
      {"hypot(3{m}, [400, 0]{cm})", "[5 3] {m}"},
      {"round(2.4{m})", "error: round needs a plain number here, not m (0, 0)"},
      {"hypot(3{m}, 1)", "error: hypot needs m here, not no unit (0, 0)"},
      {"atan2([1, 2], [1; 2])", "error: needs equal shapes, not 1 x 2 and 2 x 1 (0, 0)"},
      {"mean(5:1)", "error: must have elements (0, 0)"},
      {"gamma(5 + 0i) == 24", "1"},
      {"abs(gamma(1i)/(-0.154949828301811 - 0.498015668118356i) - 1) < 1e-13", "1"},
      {"abs(gamma(-3.3+0.2i)/(0.269757578774662 + 0.205980125997441i) - 1) < 1e-13", "1"},
      {"abs(gamma(-2.5+300i)*1e212/(1.06114451693676 - 1.75121973658806i) - 1) < 1e-11", "1"},
      {"floor(1i)", "error: must be real (0, 0)"},
      {"atan2(1)", "error: atan2 takes 2 arguments, not 1 (0, 0)"},
      {"max(3, 1, 2)", "3"},
      {"min([3, 1], 2)", "[2 1]"},
      {"max([1; 2], [5])", "[5; 5]"},
      {"max(0/0, 1) == max(0/0, 1)", "0"},
      {"min(1, 0/0) == min(1, 0/0)", "0"},
      {"max(1{kN}, 2000{N}, 0)", "2 {kN}"},
      {"max([3; 9; 2]{s})", "9 {s}"},
      {"max()", "error: max takes at least 1 argument, not 0 (0, 0)"},
  });
}

TEST_F(Functions, ThatBuild) {
  expect({
      {"zeros(2, 1) + 1{m}", "[1; 1] {m}"},
      {"ones(1, 2){kN}", "[1 1] {kN}"},
      {"linspace(0, 600{cm}, 3)", "[0; 300; 600] {cm}"},
      {"linspace(1, 2i, 2)", "[1; 0+2i complex]"},
      {"linspace(7, 9, 1)", "[9]"},
      {"linspace(1{m}, 2{s}, 3)", "error: linspace needs values of one unit: m and s (0, 0)"},
      {"blocks([[1, 2; 3, 4], [5; 6]; [7, 8i], 9])", "[1 2 5; 3 4 6; 7 0+8i 9 complex]"},
      {"blocks([1, 2])", "[1 2]"},
      {"blocks([[1, 2], [3; 4]])", "error: block 2 of row 1 is 2 x 1; 1 x 1 fits there (0, 0)"},
      {"blocks([[1, 2], \"x\"])", "error: block 2 of row 1 must be a number or a matrix (0, 0)"},
      {"zeros(-1, 2)", "error: must be an integer that is not negative (0, 0)"},
      {"zeros(2^14, 2^14)", "error: the matrix would have more than 134217728 elements (0, 0)"},
      {"linspace(0, 1, 1e300)", "error: the matrix would have more than 134217728 elements (0, 0)"},
  });
}

TEST_F(Functions, ThatGoThroughAMatrix) {
  sheet.run("A = [3, 1; 4, 2]");
  expect({
      {"sum(A{kN}, 1)", "[7 3] {kN}"},
      {"sum(A, 2)", "[4; 6]"},
      {"sum([1i; 2])", "2+1i"},
      {"prod(A{m})", "24 {m^4}"},
      {"prod(A{m}, 2)", "[3; 8] {m^2}"},
      {"mean(A{s})", "2.5 {s}"},
      {"[sum(7), prod(7), any(0), all(7)]", "[7 7 0 1]"},
      {"any([0, 0/0])", "1"},
      {"any([0, 1; 0, 0], 1)", "[0 1]"},
      {"all(A{m}, 2)", "[1; 1]"},
      {"sum(A, 3)", "error: a direction is 1, down the columns, or 2, along the rows (0, 0)"},
      {"cumsum([1; 2i; 3]{m})", "[1; 1+2i; 4+2i complex] {m}"},
      {"cumsum(A, 1)", "[3 1; 7 3]"},
      {"sort([2, 0/0, 1])[0]", "1"},
      {"sort(A{m}, 2)", "[1 3; 2 4] {m}"},
      {"sort(A)",
       "error: a 2 x 2 matrix needs a direction as well: 1, down the columns, or 2, "
       "along the rows (0, 0)"},
      {"sort([1i, 2])", "error: must be real (0, 0)"},
      {"find([0, 5, 7]{m})", "[1; 2]"},
      {"find([0, 1; 1, 1])", "[1 0; 0 1; 1 1]"},
      {"numel(find([0; 0]))", "0"},
      {"numel([[1], 2, \"x\"])", "3"},
      {"sum(prod(ones(1001, 1){m}))", "error: this unit is too large a power (0, 0)"},
  });
  EXPECT_EQ(sheet.brief("ORIGIN = 1\nfind([0; 5])"), "[2]");
}

TEST_F(Functions, OfVectorsAndSquareMatrices) {
  sheet.run("h(i, j) = 1/(i + j + 1)\nH = matrix(6, 6, h)");
  expect({
      {"dot([1i, 2], [1i; 2])", "5"},
      {"dot([1; 2]{N}, [3; 4]{m})", "11 {N m}"},
      {"dot([1, 2], [1, 2, 3])", "error: needs vectors of equal length, not 2 and 3 (0, 0)"},
      {"cross([1, 2, 3]{m}, [4; 5; 6]{N})", "[-3 6 -3] {N m}"},
      {"cross([1, 2], [1, 2])", "error: must have three elements (0, 0)"},
      {"det([0, 2; 3, 0]{kN})", "-6 {kN^2}"},
      {"det([0, 1i; 1, 2])", "0-1i"},
      {"det([1, 2; 2, 4])", "0"},
      // The determinant of the Hilbert matrix of order 6 is 1/186313420339200000.
      {"abs(det(H) * 186313420339200000 - 1) < 1e-8", "1"},
      {"abs(det(H * (1+1i)) / det(H) + 8i) < 1e-14", "1"},
      {"det([0/0, 1; 1, 0]) == 1", "0"},
      {"det([1, 2])", "error: must be square (0, 0)"},
      {"trace([1, 2; 3, 4i]{m})", "1+4i {m}"},
  });
}

}  // namespace
