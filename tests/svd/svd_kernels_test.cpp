// The singular value cores give the bits of their plain loops, in every kernel set.
#include <gtest/gtest.h>

#include <memory>

#include "svd/svd_core.hpp"
#include "svd/svd_plain.hpp"
#include "svd/svds_core.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;

using Message = std::string;

Message message_of(const char* message) {
  return message == nullptr ? "" : message;
}

void expect_plain_bits(const Specimen& specimen) {
  SCOPED_TRACE(specimen.name);
  const Dense& a = specimen.matrix;
  plain::Decomposition expected(a.rows, a.cols, a.a);
  const Message expected_message = message_of(expected.run());
  testing::for_each_kernel_set([&] {
    TestHost host;
    aMatrix* u = host.matrix(a.rows, a.cols, a.a);
    aMatrix* v = host.matrix(a.cols, a.cols, Dense(a.cols, a.cols).a);
    aMatrix* s = host.matrix(a.cols, 1, Dense(a.cols, 1).a);
    ASSERT_EQ(message_of(svd_core(u, v, s)), expected_message);
    if (!expected_message.empty()) return;
    EXPECT_TRUE(re_parts(u) == expected.W);
    EXPECT_TRUE(re_parts(v) == expected.V);
    EXPECT_TRUE(re_parts(s) == expected.w);

    aMatrix* values = host.matrix(a.rows, a.cols, a.a);
    ASSERT_EQ(svds_core(values), nullptr);
    for (int i = 0; i < a.cols; ++i) EXPECT_EQ(re(values, i, i), expected.w[std::size_t(i)]);
  });
}

TEST(SvdKernels, DecompositionIsThatOfThePlainLoops) {
  for (const auto& [m, n] : kTallShapes)
    for (const Specimen& specimen : zoo(m, n, 7)) expect_plain_bits(specimen);
}

// Shapes that end one row, column or sweep before and after a panel, a stretch of rows, a block of
// reflections and a batch of sweeps.
TEST(SvdKernels, BlocksEndAnywhere) {
  for (const Shape shape :
       {Shape{127, 63}, {128, 64}, {129, 65}, {130, 66}, {4105, 10}, {131, 131}})
    expect_plain_bits({"random", random_dense(shape.m, shape.n, 3)});
  expect_plain_bits(zoo(131, 131, 5)[6]);
  expect_plain_bits(zoo(131, 131, 5)[7]);
}

}  // namespace
}  // namespace matrix_pack
