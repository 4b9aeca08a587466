// The shared vector kernels give the bits of their plain loops, in every kernel set.
#include "pack/numeric/vector_kernels.hpp"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "pack/numeric/vector_plain.hpp"
#include "tests/support/kernel_sets.hpp"

namespace matrix_pack {
namespace {

using testing::for_each_kernel_set;

std::vector<double> random_vector(std::ptrdiff_t n, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::normal_distribution<double> normal;
  std::vector<double> x(static_cast<std::size_t>(n));
  for (double& element : x) element = normal(engine);
  return x;
}

// Odd lengths around the lane count, and starts that are not aligned to any vector.
constexpr std::ptrdiff_t kLengths[] = {0, 1, 2, 3, 5, 7, 8, 9, 15, 16, 17, 31, 33, 64, 129, 1000};
constexpr std::ptrdiff_t kStarts[] = {0, 1, 3};

TEST(VectorKernels, SumsHaveTheOneOrder) {
  const std::vector<double> xs = random_vector(1003, 1);
  const std::vector<double> ys = random_vector(1003, 2);
  for_each_kernel_set([&] {
    for (const std::ptrdiff_t n : kLengths) {
      for (const std::ptrdiff_t start : kStarts) {
        const double* x = xs.data() + start;
        const double* y = ys.data() + (3 - start);
        EXPECT_EQ(vector_kernels().dot(n, x, y), plain::dot(n, x, y)) << n << " " << start;
        EXPECT_EQ(vector_kernels().sum_squares(n, x), plain::sum_squares(n, x)) << n;
        EXPECT_EQ(vector_kernels().sum_abs(n, x), plain::sum_abs(n, x)) << n;
      }
    }
  });
}

// Runs one kernel and its plain loop on copies of the same vectors.
template <class Kernel, class Plain>
void expect_same_vectors(Kernel kernel, Plain plain_loop) {
  for (const std::ptrdiff_t n : kLengths) {
    for (const std::ptrdiff_t start : kStarts) {
      std::vector<double> x = random_vector(n + 3, 3);
      std::vector<double> y = random_vector(n + 3, 4);
      std::vector<double> expected_x = x;
      std::vector<double> expected_y = y;
      kernel(n, x.data() + start, y.data() + start);
      plain_loop(n, expected_x.data() + start, expected_y.data() + start);
      EXPECT_EQ(x, expected_x) << n << " " << start;
      EXPECT_EQ(y, expected_y) << n << " " << start;
    }
  }
}

TEST(VectorKernels, UpdatesAreElementByElement) {
  for_each_kernel_set([] {
    expect_same_vectors([](auto n, double* x, double* y) { vector_kernels().axpy(n, 0.3, x, y); },
                        [](auto n, double* x, double* y) { plain::axpy(n, 0.3, x, y); });
    expect_same_vectors(
        [](auto n, double* x, double* y) { vector_kernels().rotate(n, 0.6, 0.8, x, y); },
        [](auto n, double* x, double* y) { plain::rotate(n, 0.6, 0.8, x, y); });
    expect_same_vectors([](auto n, double* x, double*) { vector_kernels().scale(n, 0.7, x); },
                        [](auto n, double* x, double*) { plain::scale(n, 0.7, x); });
    expect_same_vectors([](auto n, double* x, double*) { vector_kernels().divide(n, 0.7, x); },
                        [](auto n, double* x, double*) { plain::divide(n, 0.7, x); });
  });
}

}  // namespace
}  // namespace matrix_pack
