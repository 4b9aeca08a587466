// svd and svds: residuals, known singular values, exact facts, messages and extreme arguments.
#include "svd/svd.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "svd/svd_core.hpp"
#include "svd/svds_core.hpp"
#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;

struct Factors {
  Dense u;
  std::vector<double> s;
  Dense v;
};

Factors factors_of(const Dense& a) {
  TestHost host;
  aMatrix* u = host.matrix(a.rows, a.cols, a.a);
  aMatrix* v = host.matrix(a.cols, a.cols, Dense(a.cols, a.cols).a);
  aMatrix* s = host.matrix(a.cols, 1, Dense(a.cols, 1).a);
  EXPECT_EQ(svd_core(u, v, s), nullptr);
  return {{a.rows, a.cols, re_parts(u)}, re_parts(s), {a.cols, a.cols, re_parts(v)}};
}

std::vector<double> singular_values(const Dense& a) {
  TestHost host;
  return re_parts(as_result_matrix(svds(host.context(), host.matrix(a.rows, a.cols, a.a))));
}

Dense rebuilt(const Factors& f) {
  return product(
      filled(f.u.rows, f.u.cols, [&](int i, int j) { return f.u(i, j) * f.s[std::size_t(j)]; }),
      transposed(f.v));
}

TEST(Svd, ResidualsAreSmallOverTheZoo) {
  WorstRatio residual("svd residual");
  WorstRatio left("svd U'U - I");
  WorstRatio right("svd V'V - I");
  for (const auto& [m, n] : kTallShapes)
    for (const auto& [name, a] : zoo(m, n, 11)) {
      const Factors f = factors_of(a);
      EXPECT_LT(residual.note(ratio_of(difference(a, rebuilt(f)), size_of(a)), name), 30) << name;
      if (size_of(a) != 0) {
        EXPECT_LT(left.note(orthogonality_ratio(f.u), name), 30) << name;
      }
      EXPECT_LT(right.note(orthogonality_ratio(f.v), name), 30) << name;
      EXPECT_TRUE(std::is_sorted(f.s.rbegin(), f.s.rend())) << name;
      EXPECT_GE(f.s.back(), 0) << name;
      EXPECT_EQ(f.s, singular_values(a)) << name;
    }
}

// Compares with known values in descending order, in units of n eps |A|.
void expect_values(WorstRatio& worst, const std::string& name, const Dense& a,
                   const std::function<double(int)>& value) {
  const std::vector<double> s = singular_values(a);
  ASSERT_EQ(s.size(), static_cast<std::size_t>(a.cols));
  for (int k = 0; k < a.cols; ++k)
    EXPECT_LT(
        worst.note(std::fabs(s[std::size_t(k)] - value(k)) / (a.cols * 0x1p-52 * value(0)), name),
        10)
        << name << " " << k;
}

TEST(Svd, SingularValuesAreTheKnownOnes) {
  WorstRatio worst("svds against known values");
  const double pi = std::acos(-1.0);
  for (const int n : {2, 3, 10, 33, 100}) {
    const auto sine = [=](int k) { return std::sin((n - k) * pi / (2 * (n + 1))); };
    // The second difference is the square of the first.
    expect_values(
        worst, "second difference",
        filled(n, n, [](int i, int j) { return i == j                 ? 2
                                               : std::abs(i - j) == 1 ? -1
                                                                      : 0; }),
        [=](int k) { return 4 * sine(k) * sine(k); });
    expect_values(worst, "first difference",
                  filled(n + 1, n, [](int i, int j) { return i == j       ? 1
                                                             : i == j + 1 ? -1
                                                                          : 0; }),
                  [=](int k) { return 2 * sine(k); });
    expect_values(
        worst, "graded",
        with_singular_values(n + 2, n, 5, [n](int k) { return std::pow(10, -15.0 * k / n); }),
        [n](int k) { return std::pow(10, -15.0 * k / n); });
    expect_values(worst, "clustered",
                  with_singular_values(n, n, 6, [](int k) { return 3 - k * 1e-15; }),
                  [](int k) { return 3 - k * 1e-15; });
  }
  // Rank 3: sqrt(1248), 20, sqrt(384), 0, 0.
  const double published[] = {std::sqrt(1248), 20, std::sqrt(384), 0, 0};
  expect_values(worst, "8 x 5 of rank 3",
                Dense(8, 5,
                      column_major({{22, 10, 2, 3, 7},
                                    {14, 7, 10, 0, 8},
                                    {-1, 13, -1, -11, 3},
                                    {-3, -2, 13, -2, 4},
                                    {9, 8, 1, -2, 4},
                                    {9, 1, -7, 5, -1},
                                    {2, -6, 6, 5, 1},
                                    {4, 5, 0, -2, 2}})),
                [&](int k) { return published[k]; });
  // 22 orthogonal columns of integers, the last of them zero: sqrt(k (k + 1)), k = 21...0.
  expect_values(
      worst, "22 x 22 of rank 21",
      filled(22, 22, [](int i, int j) { return i < j    ? 0
                                               : i == j ? 21 - j
                                               : j < 21 ? -1
                                                        : 0; }),
      [](int k) { return std::sqrt((21.0 - k) * (22.0 - k)); });
}

TEST(Svd, OneByOneHasTheDocumentedSigns) {
  TestHost host;
  for (const double a : {3.0, -3.0}) {
    const auto parts = host.parts(svd(host.context(), host.matrix({{a}})));
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_EQ(re(parts[0], 0, 0), -1);
    EXPECT_EQ(re(parts[1], 0, 0), a > 0 ? -1 : 1);
    expect_matrix(svds(host.context(), host.matrix({{a}})), {{3}});
  }
}

// U first, then V: A = U diag(s) V' with these signs and this order. Of the equal values 2 the
// exchanges bring the later one to the front.
TEST(Svd, DiagonalMatricesAreSortedByTheDocumentedExchanges) {
  TestHost host;
  aMatrix* a = host.matrix({{1, 0, 0, 0}, {0, -2, 0, 0}, {0, 0, 2, 0}, {0, 0, 0, 3}, {0, 0, 0, 0}});
  const auto parts = host.parts(svd(host.context(), a));
  ASSERT_EQ(parts.size(), 2u);
  expect_matrix(parts[0],
                {{0, 0, 0, -1}, {0, 0, -1, 0}, {0, -1, 0, 0}, {-1, 0, 0, 0}, {0, 0, 0, 0}});
  expect_matrix(parts[1], {{0, 0, 0, -1}, {0, 0, 1, 0}, {0, -1, 0, 0}, {-1, 0, 0, 0}});
  expect_matrix(svds(host.context(), a), {{3}, {2}, {2}, {1}});
  expect_matrix(svds(host.context(), host.matrix({{3, 0, 0}, {0, -5, 0}, {0, 0, 1}})),
                {{5}, {3}, {1}});
}

TEST(Svd, AZeroMatrixHasIdentityFactors) {
  TestHost host;
  for (aMatrix* zero : {host.matrix({{0, 0}, {0, 0}, {0, 0}}), host.lean(3, 2)}) {
    const auto parts = host.parts(svd(host.context(), zero));
    ASSERT_EQ(parts.size(), 2u);
    expect_matrix(parts[0], {{1, 0}, {0, 1}, {0, 0}});
    expect_matrix(parts[1], {{1, 0}, {0, 1}});
    expect_matrix(svds(host.context(), zero), {{0}, {0}});
  }
}

TEST(Svd, NegationAndPowersOfTwoChangeNoOtherBit) {
  const Dense a = random_dense(9, 7, 21);
  const auto scaled = [&](double factor) {
    return filled(9, 7, [&](int i, int j) { return factor * a(i, j); });
  };
  const Factors f = factors_of(a);
  const Factors g = factors_of(scaled(0x1p30));
  EXPECT_EQ(g.u.a, f.u.a);
  EXPECT_EQ(g.v.a, f.v.a);
  for (std::size_t k = 0; k < f.s.size(); ++k) EXPECT_EQ(g.s[k], 0x1p30 * f.s[k]);
  EXPECT_EQ(singular_values(scaled(-1)), f.s);
}

TEST(Svd, MessagesNameTheArgumentAtFault) {
  TestHost host;
  EfiCallContext* c = host.context();
  aMatrix* complex = host.complex_matrix({{1, 0}, {0, 1}});
  aMatrix* wide = host.matrix({{1, 2, 3}, {4, 5, 6}});
  for (auto function : {svd, svds}) {
    expect_error(function(c, host.scalar(1)), "must be array", 0, 1);
    expect_error(function(c, host.string("a")), "must be array", 0, 1);
    expect_error(function(c, complex), "must be real", 0, 1);
    expect_error(function(c, host.imaginary({{1, 2}})), "must be real", 0, 1);
    expect_error(function(c, wide), "number of rows less than number of columns", 0, 0);
  }
  Snapshot before(wide);
  EXPECT_STREQ(svds_core(wide), "number of rows less than number of columns");
  EXPECT_TRUE(before.unchanged());
}

// A value, or one of the documented words, and soon: never a hang, a crash or a stray message.
TEST(Svd, ExtremeElementsEndInAValueOrADocumentedMessage) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  const std::vector<std::string> documented = {"overflow", "too many iterations", "singularity",
                                               "floating point error"};
  for (const double x : {kNan, kInf, -kInf, 1e308, 1e200, 1e-200, 5e-324})
    for (const int n : {1, 2, 5, 60}) {
      const Dense noise = random_dense(n + 1, n, 3);
      const Dense all = filled(n + 1, n, [&](int i, int j) { return x * noise(i, j); });
      Dense one = noise;
      one(n / 2, n / 2) = x;
      for (const Dense& a : {all, one})
        for (auto function : {svd, svds}) {
          TestHost host;
          Anyval* value = function(host.context(), host.matrix(n + 1, n, a.a));
          if (value->kind != kErrorKind) continue;
          const std::string message = static_cast<aError*>(value)->message->text;
          EXPECT_EQ(std::count(documented.begin(), documented.end(), message), 1)
              << x << " " << n << ": " << message;
        }
    }
  TestHost host;
  EfiCallContext* c = host.context();
  const auto square = [&](double x) { return host.matrix({{x, 2 * x}, {3 * x, x}}); };
  expect_fault(svd(c, square(kNan)), "floating point error");
  expect_error(svds(c, square(kNan)), "too many iterations", 0, 0);
  expect_fault(svd(c, square(kInf)), "floating point error");
  expect_fault(svd(c, square(1e200)), "overflow");
  expect_error(svds(c, square(1e200)), "too many iterations", 0, 0);
}

// The first root of a step is guarded in svd_core only; svds_core goes on with an infinite one.
TEST(Svd, OnlySvdGuardsTheFirstRoot) {
  TestHost host;
  const auto equal = [&](double x) { return host.matrix({{x, x}, {x, x}}); };
  EXPECT_STREQ(svd_core(equal(1.5e154), equal(0), host.column({0, 0})), "overflow");
  EXPECT_STREQ(svds_core(equal(1.5e154)), "too many iterations");
  // The second root is guarded in both.
  EXPECT_STREQ(svds_core(host.matrix({{4e153, 8e153}, {1.2e154, 4e153}})), "overflow");
}

}  // namespace
}  // namespace matrix_pack
