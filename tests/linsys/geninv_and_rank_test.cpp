// geninv and rank: what the singular value decomposition is used for.
#include <algorithm>
#include <cmath>

#include "linsys/linsys.hpp"
#include "svd/svd.hpp"
#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using Geninv = InHost;
using Rank = InHost;

TEST_F(Geninv, FulfilsTheFourConditions) {
  WorstRatio axa("geninv A X A - A", 8), xax("geninv X A X - X", 8),
      ax_symmetric("geninv (A X)' - A X", 10), xa_symmetric("geninv (X A)' - X A", 10);
  for (const auto& [m, n] : kTallShapes)
    for (const auto& [name, a, imaginary] : zoo(m, n, 41)) {
      TestHost host;

      aMatrix* argument = host.matrix(m, n, a.a);
      const std::vector<double> s = re_parts(as_result_matrix(svds(c, argument)));
      // Values that are neither large nor rounding errors have no place on either side of TOL.
      if (std::any_of(s.begin(), s.end(),
                      [&](double x) { return x > 4e-15 * s[0] && x < 1e-6 * s[0]; }))
        continue;
      aMatrix* result = as_result_matrix(geninv(c, argument, host.scalar(1e-9 * s[0])));
      ASSERT_EQ(result->rows, n);
      ASSERT_EQ(result->cols, m);
      EXPECT_EQ(result->im, nullptr);
      const Dense x(n, m, re_parts(result)), ax = product(a, x), xa = product(x, a);
      const double condition = std::max(size_of(a) * size_of(x), 1.0);
      const auto ratio = [&](const Dense& residual, double size) {
        return ratio_of(residual, size == 0 ? 1 : size * condition);
      };
      axa.expect(ratio(difference(product(ax, a), a), size_of(a)), name);
      xax.expect(ratio(difference(product(xa, x), x), size_of(x)), name);
      ax_symmetric.expect(ratio(difference(transposed(ax), ax), 1), name);
      xa_symmetric.expect(ratio(difference(transposed(xa), xa), 1), name);
    }
}

TEST_F(Geninv, DropsSingularValuesUpToTol) {
  aMatrix* a = host.matrix({{4, 0}, {0, -2}, {0, 0}});
  expect_matrix(geninv(c, a, host.scalar(0)), {{0.25, 0, 0}, {0, -0.5, 0}});
  expect_matrix(geninv(c, a, host.scalar(1.9)), {{0.25, 0, 0}, {0, -0.5, 0}});
  expect_matrix(geninv(c, a, host.scalar(2)), {{0.25, 0, 0}, {0, 0, 0}});
  expect_matrix(geninv(c, a, host.scalar(5)), {{0, 0, 0}, {0, 0, 0}});
  // The threshold is absolute, and its imaginary part plays no part.
  expect_matrix(geninv(c, host.matrix({{1e-9}}), host.scalar(1e-9, 7)), {{0}});
  expect_matrix(geninv(c, host.lean(3, 2), host.scalar(0)), {{0, 0, 0}, {0, 0, 0}});
  aMatrix* x = as_result_matrix(geninv(c, host.matrix({{3}, {4}}), host.scalar(1e-9)));
  EXPECT_NEAR(re(x, 0, 0), 0.12, 2e-16);
  EXPECT_NEAR(re(x, 0, 1), 0.16, 2e-16);
}

TEST_F(Geninv, MessagesAndExtremeElements) {
  Anyval* tol = host.scalar(1e-9);
  expect_error(geninv(c, host.scalar(1), tol), "must be array", 0, 0);
  expect_error(geninv(c, host.complex_matrix({{1}}), tol), "must be real", 0, 1);
  expect_error(geninv(c, host.matrix({{1, 2}}), tol), "number of rows less than number of columns",
               0, 0);
  expect_error(geninv(c, host.matrix({{kNan, 1}, {1, 1}}), tol), "too many iterations", 0, 0);
  expect_error(geninv(c, host.matrix({{1.5e154, 1.5e154}, {1.5e154, 1.5e154}}), tol), "overflow", 0,
               0);
}

TEST_F(Rank, CountsWhatExceedsTheRelativeTolerance) {
  expect_number(rank(c, host.matrix({{1, 2}, {2, 4}})), 1);
  expect_number(rank(c, host.lean(2, 3)), 0);
  expect_number(rank(c, host.matrix({{0, 0}, {0, 0}})), 0);
  expect_number(rank(c, host.matrix({{1, 2, 3}, {4, 5, 6}})), 2);
  // Equal to the tolerance, and one bit above it; of a wide matrix the columns count.
  expect_number(rank(c, host.matrix({{1, 0}, {0, 0x1p-51}})), 1);
  expect_number(rank(c, host.matrix({{1, 0}, {0, 0x1.0000000000001p-51}})), 2);
  expect_number(rank(c, host.matrix({{1, 0, 0, 0}, {0, 0x1p-50, 0, 0}})), 1);
  expect_number(rank(c, host.matrix({{1, 0, 0, 0}, {0, 0x1.0000000000001p-50, 0, 0}})), 2);
  for (const int r : {0, 1, 5, 12}) {
    const Dense a = with_singular_values(20, 12, 9, [r](int k) { return k < r ? 1 + k : 0; });
    expect_number(rank(c, host.matrix(20, 12, a.a)), r);
    expect_number(rank(c, host.matrix(12, 20, transposed(a).a)), r);
  }
}

TEST_F(Rank, Messages) {
  expect_error(rank(c, host.scalar(1)), "must be array", 0, 1);
  expect_error(rank(c, host.complex_matrix({{1, 2}})), "must be real", 0, 1);
  expect_error(rank(c, host.matrix({{kNan, 1}, {1, 1}})), "too many iterations", 0, 0);
}

}  // namespace
}  // namespace matrix_pack
