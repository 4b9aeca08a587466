// geninv and rank: what the singular value decomposition is used for.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "linsys/linsys.hpp"
#include "svd/svd.hpp"
#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;

struct Ratios {
  WorstRatio axa{"geninv A X A - A"};
  WorstRatio xax{"geninv X A X - X"};
  WorstRatio ax{"geninv (A X)' - A X"};
  WorstRatio xa{"geninv (X A)' - X A"};
};

void expect_moore_penrose(Ratios& ratios, const std::string& name, const Dense& a, const Dense& x) {
  const double a_size = size_of(a);
  const double x_size = size_of(x);
  const Dense ax = product(a, x);
  const Dense xa = product(x, a);
  const double condition = std::max(a_size * x_size, 1.0);
  const auto ratio = [&](const Dense& residual, double size) {
    return ratio_of(residual, size == 0 ? 1 : size * condition);
  };
  EXPECT_LT(ratios.axa.note(ratio(difference(product(ax, a), a), a_size), name), 10) << name;
  EXPECT_LT(ratios.xax.note(ratio(difference(product(xa, x), x), x_size), name), 10) << name;
  EXPECT_LT(ratios.ax.note(ratio(difference(transposed(ax), ax), 1), name), 10) << name;
  EXPECT_LT(ratios.xa.note(ratio(difference(transposed(xa), xa), 1), name), 10) << name;
}

TEST(Geninv, FulfilsTheFourConditions) {
  Ratios ratios;
  for (const auto& [m, n] : kTallShapes)
    for (const auto& [name, a] : zoo(m, n, 41)) {
      TestHost host;
      EfiCallContext* c = host.context();
      aMatrix* argument = host.matrix(m, n, a.a);
      const std::vector<double> s = re_parts(as_result_matrix(svds(c, argument)));
      // Values that are neither large nor rounding errors have no place on either side of TOL.
      if (std::any_of(s.begin(), s.end(),
                      [&](double x) { return x > 1e-13 * s[0] && x < 1e-6 * s[0]; }))
        continue;
      aMatrix* x = as_result_matrix(geninv(c, argument, host.scalar(1e-9 * s[0])));
      ASSERT_EQ(x->rows, n);
      ASSERT_EQ(x->cols, m);
      EXPECT_EQ(x->im, nullptr);
      expect_moore_penrose(ratios, name, a, Dense(n, m, re_parts(x)));
    }
}

TEST(Geninv, DropsSingularValuesUpToTol) {
  TestHost host;
  EfiCallContext* c = host.context();
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

TEST(Geninv, MessagesAndExtremeElements) {
  TestHost host;
  EfiCallContext* c = host.context();
  Anyval* tol = host.scalar(1e-9);
  expect_error(geninv(c, host.scalar(1), tol), "must be array", 0, 0);
  expect_error(geninv(c, host.complex_matrix({{1}}), tol), "must be real", 0, 1);
  expect_error(geninv(c, host.matrix({{1, 2}}), tol), "number of rows less than number of columns",
               0, 0);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  expect_error(geninv(c, host.matrix({{nan, 1}, {1, 1}}), tol), "too many iterations", 0, 0);
  expect_error(geninv(c, host.matrix({{1.5e154, 1.5e154}, {1.5e154, 1.5e154}}), tol), "overflow", 0,
               0);
}

TEST(Rank, CountsWhatExceedsTheRelativeTolerance) {
  TestHost host;
  EfiCallContext* c = host.context();
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

TEST(Rank, Messages) {
  TestHost host;
  EfiCallContext* c = host.context();
  expect_error(rank(c, host.scalar(1)), "must be array", 0, 1);
  expect_error(rank(c, host.complex_matrix({{1, 2}})), "must be real", 0, 1);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  expect_error(rank(c, host.matrix({{nan, 1}, {1, 1}})), "too many iterations", 0, 0);
}

}  // namespace
}  // namespace matrix_pack
