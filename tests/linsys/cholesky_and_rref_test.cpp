// cholesky and rref: residuals, exact facts, messages, and the bits of the plain sums.
#include <optional>

#include "linsys/cholesky.hpp"
#include "linsys/linsys.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using Cholesky = InHost;
using Rref = InHost;
using CholeskyKernels = InEveryKernelSet;

// B^T B + a little of the identity: symmetric to the last bit.
Dense definite(int n, unsigned seed) {
  const Dense b = random_dense(n, n, seed);
  const Dense a = product(transposed(b), b);
  return filled(n, n, [&](int i, int j) { return (i < j ? a(i, j) : a(j, i)) + (i == j ? 1 : 0); });
}

// Row by row, every sum from its first term to its last. Without a value at a pivot <= 0.
std::optional<Dense> plain_cholesky(const Dense& a) {
  Dense l(a.rows, a.rows);
  for (int i = 0; i < a.rows; ++i)
    for (int j = i; j < a.rows; ++j) {
      double s = a(i, j);
      for (int k = 0; k < i; ++k) s = s - l(i, k) * l(j, k);
      if (j == i && s <= 0.0) return std::nullopt;
      l(j, i) = j == i ? std::sqrt(s) : s / l(i, i);
    }
  return l;
}

TEST_P(CholeskyKernels, HasTheBitsOfThePlainSumsAndASmallResidual) {
  WorstRatio worst("cholesky residual", 1);
  for (const int n : orders({1, 2, 3, 7, 8, 9, 16, 17, 33, 63, 64, 65, 130, 200})) {
    // A definite one, and with something else in the middle and in the corner.
    for (const double odd : {1.0, kNan, kInf, -kInf, -1e9}) {
      TestHost host;
      Dense a = definite(n, 31);
      a(n / 2, n / 2) *= odd;
      a(0, n - 1) *= odd;
      Anyval* const value = cholesky(host.context(), host.matrix(n, n, a.a));
      const auto expected = plain_cholesky(a);
      ASSERT_EQ(value->kind == kMatrixKind, expected.has_value()) << n << ' ' << odd;
      if (!expected) continue;
      const Dense l = {n, n, re_parts(as_result_matrix(value))};
      for (std::size_t k = 0; k < l.a.size(); ++k)
        ASSERT_TRUE(l.a[k] == expected->a[k] || (std::isnan(l.a[k]) && std::isnan(expected->a[k])))
            << n << ' ' << odd;
      if (odd == 1.0)
        worst.expect(ratio_of(difference(a, product(l, transposed(l))), size_of(a)),
                     std::to_string(n));
    }
  }
}

IN_EVERY_KERNEL_SET(CholeskyKernels);

TEST_F(Cholesky, ExactFactsAndMessages) {
  expect_matrix(cholesky(c, host.matrix({{4, 2}, {2, 5}})), {{2, 0}, {1, 2}});
  expect_matrix(cholesky(c, host.matrix({{4}})), {{2}});
  // Only the upper triangle is read.
  expect_matrix(cholesky(c, host.matrix({{4, 2}, {-9, 5}})), {{2, 0}, {1, 2}});

  expect_error(cholesky(c, host.scalar(4)), "must be array", 0, 1);
  expect_error(cholesky(c, host.matrix({{1, 2}})), "must be square", 0, 1);
  expect_error(cholesky(c, host.complex_matrix({{1}})), "must be real", 0, 1);
  constexpr const char* kNotDefinite = "non-positive definite matrix";
  EXPECT_TRUE(std::isnan(re(as_result_matrix(cholesky(c, host.matrix({{kNan}}))), 0, 0)));
  for (const double x : {0.0, -1.0, -kInf})
    expect_error(cholesky(c, host.matrix({{x}})), kNotDefinite, 0, 0);
  expect_error(cholesky(c, host.matrix({{1, 2}, {2, 4}})), kNotDefinite, 0, 0);
  expect_error(cholesky(c, host.lean(2, 2)), kNotDefinite, 0, 0);
}

TEST_F(Cholesky, PackedFactorsFromTheLastColumn) {
  aMatrix* factor = nullptr;
  const Dense a = definite(9, 3);
  std::vector<double> packed;
  for (int j = 0; j < 9; ++j)
    for (int i = 0; i <= j; ++i) packed.push_back(a(i, j));
  ASSERT_EQ(cholesky_packed(c, host.column(packed), 9, &factor), nullptr);
  Dense u(9, 9);
  for (int j = 0, k = 0; j < 9; ++j)
    for (int i = 0; i <= j; ++i) u(i, j) = re(factor, k++, 0);
  EXPECT_LT(ratio_of(difference(a, product(u, transposed(u))), size_of(a)), 1);

  EXPECT_STREQ(cholesky_packed(c, host.column({1, 2}), 2, &factor), "invalid dimensions");
  constexpr const char* kNotDefinite = "non-positive definite matrix";
  EXPECT_STREQ(cholesky_packed(c, host.column({1, 0, 0}), 2, &factor), kNotDefinite);
  // The pivot to come is positive, but nothing beside what the factor holds.
  EXPECT_STREQ(cholesky_packed(c, host.column({1e-8, 0, 1}), 2, &factor), kNotDefinite);
  EXPECT_EQ(cholesky_packed(c, host.column({2e-8, 0, 1}), 2, &factor), nullptr);
}

TEST_F(Rref, ExactFacts) {
  expect_matrix(rref(c, host.matrix({{1, 2}, {2, 4}})), {{1, 2}, {0, 0}});
  expect_matrix(rref(c, host.matrix({{0, 2, 4}, {1, 1, 1}, {2, 2, 2}})),
                {{1, 0, -1}, {0, 1, 2}, {0, 0, 0}});
  expect_matrix(rref(c, host.matrix({{2, 1}, {4, 4}, {8, 0}})), {{1, 0}, {0, 1}, {0, 0}});
  // Of equally large candidates the first row is the pivot: the other way round 1/3 would show.
  expect_matrix(rref(c, host.matrix({{2, 1}, {-2, 3}})), {{1, 0}, {0, 1}});
  // A skipped column keeps its negligible elements, and they do not make a pivot later.
  expect_matrix(rref(c, host.matrix({{1e-17, 1}, {0, 0}})), {{1e-17, 1}, {0, 0}});
  // Not square: only max(rows, cols) eps counts as zero, so this is a pivot.
  expect_matrix(rref(c, host.matrix({{1e-15, 1e-15, 0}})), {{1, 1, 0}});
  // Square and large: the tolerance ends at 1e-10.
  expect_matrix(rref(c, host.matrix({{1e30, 0}, {0, 1e-9}})), {{1, 0}, {0, 1}});
  expect_matrix(rref(c, host.matrix({{1e30, 0}, {0, 1e-11}})), {{1, 0}, {0, 1e-11}});
  for (const int n : {3, 17, 40}) {
    const Dense a = random_dense(n, n, 9);
    const aMatrix* r = as_result_matrix(rref(c, host.matrix(n, n, a.a)));
    EXPECT_EQ(re_parts(r), identity_dense(n).a);
  }
}

TEST_F(Rref, ReadsTheRealPartAlone) {
  aMatrix* lean = host.lean(2, 2);
  EXPECT_EQ(rref(c, lean), lean);
  aMatrix* reduced = as_result_matrix(rref(c, host.complex_matrix({{{2, 5}, {4, 1}}})));
  EXPECT_EQ(reduced->im, nullptr);
  expect_matrix(reduced, {{1, 2}});
  expect_error(rref(c, host.scalar(1)), "must be array", 0, 1);
  expect_error(rref(c, host.imaginary({{1}})), "must be real", 0, 1);
  expect_error(rref(c, host.nested(1, 1, {host.scalar(1)})), "may not be nested", 0, 1);
  for (const double x : {kNan, kInf, -kInf, 1e200, 1e-200})
    as_result_matrix(rref(c, host.matrix({{1, 2, 3}, {4, x, 6}, {7, 8, 9}})));
}

}  // namespace
}  // namespace matrix_pack
