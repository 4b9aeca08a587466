// What fuzzing found, each with the argument that showed it.
#include <gtest/gtest.h>

#include <cfenv>
#include <limits>

#include "pack/exports.hpp"
#include "structural/structural.hpp"
#include "tests/support/fp_environment.hpp"
#include "tests/support/test_host.hpp"

namespace {

using namespace test;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

class FoundByFuzzing : public ::testing::Test {
 protected:
  TestHost host;
  EfiCallContext* context = host.context();
};

// It read and wrote beyond the empty part arrays.
TEST_F(FoundByFuzzing, ReverseOfAnArrayWithoutColumns) {
  expect_matrix(matrix_pack::reverse(context, host.matrix(2, 0, {})), {{0}, {0}});
}

// The exports for a matrix left the flags of their arithmetic.
TEST_F(FoundByFuzzing, ExportsLeaveTheEnvironmentAlone) {
  aMatrix* a = host.complex_matrix({{1, 2}, {3, 4}});
  aMatrix* inverse = nullptr;
  const auto environment = fp_environment();
  eigenvals(context, a, 1e-9);
  eigenvecs(context, a);
  EXPECT_EQ(cinv(context, a, &inverse, true), nullptr);
  EXPECT_EQ(fp_environment(), environment);
}

// Where rounding goes down, a finite number doubled again and again never reaches infinity.
TEST_F(FoundByFuzzing, BalancingEndsWhereRoundingGoesDown) {
  aMatrix* a = host.complex_matrix({{{1, -kInfinity}, 2, 3}, {{4, -kInfinity}, 5, 6}, {7, 8, 9}});
  std::fesetround(FE_DOWNWARD);
  Anyval* vectors = eigenvecs(context, a);
  std::fesetround(FE_TONEAREST);
  expect_error(vectors, "too many iterations", 0, 0);
}

}  // namespace
