// The shared vector kernels give the bits of their plain loops, in every kernel set.
#include "pack/numeric/vector_kernels.hpp"

#include <functional>

#include "pack/numeric/vector_plain.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using VectorKernels = test::InEveryKernelSet;
using Loop = std::function<void(std::ptrdiff_t n, double* x, double* y)>;

// Runs a kernel and its plain loop on copies of the same vectors: of odd lengths around the lane
// count, from starts that are not aligned to any vector.
void expect_same(const Loop& kernel, const Loop& plain_loop) {
  for (const int n : {0, 1, 2, 3, 5, 7, 8, 9, 15, 16, 17, 31, 33, 64, 129, 1000})
    for (const int start : {0, 1, 3}) {
      test::Dense x = test::random_dense(n + 3, 2, 1), expected = x;
      kernel(n, &x(start, 0), &x(3 - start, 1));
      plain_loop(n, &expected(start, 0), &expected(3 - start, 1));
      EXPECT_EQ(x.a, expected.a) << n << " " << start;
    }
}

// A loop that keeps a sum in place of the first element.
Loop keeping(const std::function<double(std::ptrdiff_t n, const double* x, const double* y)>& sum) {
  return [=](std::ptrdiff_t n, double* x, double* y) {
    const double s = sum(n, x, y);
    if (n > 0) *x = s;
    EXPECT_TRUE(n > 0 || s == 0);
  };
}

TEST_P(VectorKernels, GoElementByElementAndSumInTheOneOrder) {
  const auto& k = vector_kernels();
  expect_same([&](auto n, auto* x, auto* y) { k.axpy(n, 0.3, x, y); },
              [](auto n, auto* x, auto* y) { plain::axpy(n, 0.3, x, y); });
  expect_same([&](auto n, auto* x, auto* y) { k.rotate(n, 0.6, 0.8, x, y); },
              [](auto n, auto* x, auto* y) { plain::rotate(n, 0.6, 0.8, x, y); });
  expect_same([&](auto n, auto* x, auto*) { k.scale(n, 0.7, x); },
              [](auto n, auto* x, auto*) { plain::scale(n, 0.7, x); });
  expect_same([&](auto n, auto* x, auto*) { k.divide(n, 0.7, x); },
              [](auto n, auto* x, auto*) { plain::divide(n, 0.7, x); });
  expect_same(keeping([&](auto n, auto* x, auto* y) { return k.dot(n, x, y); }),
              keeping([](auto n, auto* x, auto* y) { return plain::dot(n, x, y); }));
  expect_same(keeping([&](auto n, auto* x, auto*) { return k.sum_squares(n, x); }),
              keeping([](auto n, auto* x, auto*) { return plain::sum_squares(n, x); }));
  expect_same(keeping([&](auto n, auto* x, auto*) { return k.sum_abs(n, x); }),
              keeping([](auto n, auto* x, auto*) { return plain::sum_abs(n, x); }));
}

IN_EVERY_KERNEL_SET(VectorKernels);

}  // namespace
}  // namespace matrix_pack
