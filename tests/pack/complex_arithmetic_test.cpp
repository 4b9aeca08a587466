// Complex quotient and modulus: exact values and the rules for overflow.
#include "pack/numeric/complex_arithmetic.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "pack/frame/faults.hpp"

namespace matrix_pack {
namespace {

void expect_quotient(Complex a, Complex d, Complex expected) {
  const Complex q = divide(a, d);
  EXPECT_EQ(q.re, expected.re);
  EXPECT_EQ(q.im, expected.im);
}

TEST(ComplexArithmetic, QuotientTakesTheLargerPartOfTheDivisorAsScale) {
  expect_quotient({-5, 10}, {2, 1}, {0, 5});
  expect_quotient({-5, 10}, {1, 2}, {3, 4});
  expect_quotient({2, 6}, {1, -1}, {-2, 4});  // Equal parts: the real one is the scale.
  // The unscaled formula would overflow or divide zero by zero here.
  expect_quotient({1e300, 1e300}, {1e300, 1e300}, {1, 0});
  expect_quotient({1e-300, 1e-300}, {0, 1e-300}, {1, -1});
}

TEST(ComplexArithmetic, ModulusIsUnscaledUnlessAPartIsZero) {
  EXPECT_EQ(cmodulus({3, -4}), 5);
  EXPECT_EQ(cmodulus({0, -1e308}), 1e308);
  EXPECT_EQ(cmodulus({-1e308, 0}), 1e308);
  EXPECT_EQ(cmodulus({1e-200, 1e-200}), 0);  // The squares underflow: kept, pivots rely on it.
  EXPECT_TRUE(std::isnan(cmodulus({std::nan(""), 1})));
}

TEST(ComplexArithmetic, ModulusThrowsTheOverflowFault) {
  for (const Complex z : {Complex{1e200, 1}, Complex{-1, 1e308},
                          Complex{std::numeric_limits<double>::infinity(), 1}}) {
    try {
      cmodulus(z);
      ADD_FAILURE() << z.re << " " << z.im;
    } catch (const SE_FPEOverflow_Exception& fault) {
      EXPECT_EQ(fault.code, kFaultOverflow);
      EXPECT_TRUE(fault.is_overflow());
    }
  }
}

}  // namespace
}  // namespace matrix_pack
