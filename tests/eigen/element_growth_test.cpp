// Eigenvectors whose components, solved for one after another, grow beyond the range of a double.
#include <gtest/gtest.h>

#include <cmath>

#include "pack/exports.hpp"
#include "tests/support/test_host.hpp"

namespace {

using namespace test;

// Ones on and above the diagonal, and below them a block with the eigenvalues 1 +- distance i: each
// row above multiplies the component by 1 / distance.
TEST(EigenvectorGrowth, IsScaledAwayForAComplexPair) {
  constexpr int n = 46;
  constexpr double distance = 1e-8;
  TestHost host;
  std::vector<double> elements(n * n);
  const auto at = [&](int i, int j) -> double& {
    return elements[static_cast<std::size_t>(j * n + i)];
  };
  for (int i = 0; i < n; ++i) {
    at(i, i) = 1;
    if (i + 1 < n) at(i, i + 1) = i + 2 < n ? 1 : distance;
  }
  at(n - 1, n - 2) = -distance;
  const aMatrix* const a = host.matrix(n, n, elements);
  const aMatrix* const v =
      as_result_matrix(eigenvecs(host.context(), static_cast<Anyval*>(const_cast<aMatrix*>(a))));
  ASSERT_EQ(v->cols, n);
  for (int column : {n - 2, n - 1}) {
    const Complex lambda(1, column == n - 2 ? distance : -distance);
    double residual = 0, conjugate_residual = 0, norm = 0;
    for (int i = 0; i < n; ++i) {
      Complex image;
      for (int j = 0; j < n; ++j)
        image += re(a, i, j) * Complex(re(v, j, column), im(v, j, column));
      const Complex x(re(v, i, column), im(v, i, column));
      residual = std::max(residual, std::abs(image - lambda * x));
      conjugate_residual = std::max(conjugate_residual, std::abs(image - std::conj(lambda) * x));
      norm = std::max(norm, std::abs(x));
    }
    EXPECT_NEAR(norm, 1, 1e-6);
    EXPECT_LT(std::min(residual, conjugate_residual), 1e-14);
  }
}

}  // namespace
