// svd and svds: residuals, the bits of the plain loops, known singular values, exact facts and
// messages.
#include "svd/svd.hpp"

#include <algorithm>
#include <cmath>

#include "svd/svd_core.hpp"
#include "svd/svd_plain.hpp"
#include "svd/svds_core.hpp"
#include "tests/support/eigen_zoo.hpp"
#include "tests/support/kernel_sets.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using Svd = InHost;
using SvdKernels = InEveryKernelSet;

struct SvdFactors {
  Dense u;
  std::vector<double> s;
  Dense v;
};

SvdFactors svd_factors_of(const Dense& a) {
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

Dense rebuilt(const SvdFactors& f) {
  return product(
      filled(f.u.rows, f.u.cols, [&](int i, int j) { return f.u(i, j) * f.s[std::size_t(j)]; }),
      transposed(f.v));
}

void check(const Dense& a, const std::string& name, WorstRatio& residual, WorstRatio& left,
           WorstRatio& right) {
  SCOPED_TRACE(name);
  const SvdFactors f = svd_factors_of(a);
  residual.expect(ratio_of(difference(a, rebuilt(f)), size_of(a)), name);
  if (size_of(a) != 0) left.expect(orthogonality_ratio(f.u), name);
  right.expect(orthogonality_ratio(f.v), name);
  EXPECT_TRUE(std::is_sorted(f.s.rbegin(), f.s.rend()));
  EXPECT_GE(f.s.back(), 0);
  EXPECT_EQ(f.s, singular_values(a));
  plain::Decomposition expected(a.rows, a.cols, a.a);
  ASSERT_EQ(expected.run(), nullptr);
  EXPECT_TRUE(f.u.a == expected.W);
  EXPECT_TRUE(f.v.a == expected.V);
  EXPECT_TRUE(f.s == expected.w);
}

TEST_P(SvdKernels, ResidualsAreSmallAndTheBitsThoseOfThePlainLoops) {
  WorstRatio residual("svd residual", 11), left("svd U'U - I", 30), right("svd V'V - I", 20);
  for (const auto& [m, n] : kTallShapes)
    for (const auto& [name, a, imaginary] : zoo(m, n, 11)) check(a, name, residual, left, right);
  // Shapes that end one row, column or sweep before and after a panel, a stretch of rows, a block
  // of reflections and a batch of sweeps; and columns that are whole lines.
  for (const Shape shape : {Shape{127, 63},
                            {128, 64},
                            {129, 65},
                            {130, 66},
                            {208, 40},
                            {1032, 20},
                            {4105, 10},
                            {4112, 9},
                            {131, 131}})
    check(random_dense(shape.m, shape.n, 3), "random", residual, left, right);
  for (const Structure structure : {Structure::bidiagonal, Structure::bidiagonal_gaps})
    check(specimen({Source::units, structure}, 131, 131, 5).matrix, name_of(structure), residual,
          left, right);
}

IN_EVERY_KERNEL_SET(SvdKernels);

// Compares with known values in descending order, in units of n eps |A|.
void expect_values(WorstRatio& worst, const std::string& name, const Dense& a,
                   const std::function<double(int)>& value) {
  const std::vector<double> s = singular_values(a);
  ASSERT_EQ(s.size(), static_cast<std::size_t>(a.cols));
  for (int k = 0; k < a.cols; ++k)
    worst.expect(std::fabs(s[std::size_t(k)] - value(k)) / (a.cols * 0x1p-52 * value(0)), name);
}

TEST_F(Svd, SingularValuesAreTheKnownOnes) {
  WorstRatio worst("svds against known values", 7);
  const auto graded = [](int n) { return [n](int k) { return std::pow(10, -15.0 * k / n); }; };
  const auto clustered = [](int k) { return 3 - k * 1e-15; };
  for (const int n : {2, 3, 10, 33, 100}) {
    const auto sine = [=](int k) { return std::sin((n - k) * std::acos(-1.0) / (2 * (n + 1))); };
    // The second difference is the square of the first.
    expect_values(worst, "second difference", filled(n, n, tridiagonal(-1, 2, -1)),
                  [=](int k) { return 4 * sine(k) * sine(k); });
    expect_values(worst, "first difference", filled(n + 1, n, tridiagonal(-1, 1, 0)),
                  [=](int k) { return 2 * sine(k); });
    expect_values(worst, "graded", with_singular_values(n + 2, n, 5, graded(n)), graded(n));
    expect_values(worst, "clustered", with_singular_values(n, n, 6, clustered), clustered);
  }
  // Rank 3: sqrt(1248), 20, sqrt(384), 0, 0.
  const double published[] = {std::sqrt(1248), 20, std::sqrt(384), 0, 0};
  expect_values(
      worst, "8 x 5 of rank 3",
      Dense(8, 5, {22, 14, -1, -3, 9, 9, 2,   4,  10, 7, 13, -2, 8, 1, -6, 5, 2, 10, -1, 13,
                   1,  -7, 6,  0,  3, 0, -11, -2, -2, 5, 5,  -2, 7, 8, 3,  4, 4, -1, 1,  2}),
      [&](int k) { return published[k]; });
}

TEST_F(Svd, OneByOneHasTheDocumentedSigns) {
  for (const double a : {3.0, -3.0}) {
    const auto parts = host.parts(svd(c, host.matrix({{a}})));
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_EQ(re(parts[0], 0, 0), -1);
    EXPECT_EQ(re(parts[1], 0, 0), a > 0 ? -1 : 1);
    expect_matrix(svds(c, host.matrix({{a}})), {{3}});
  }
}

// U first, then V: A = U diag(s) V' with these signs and this order. Of the equal values 2 the
// exchanges bring the later one to the front.
TEST_F(Svd, DiagonalMatricesAreSortedByTheDocumentedExchanges) {
  aMatrix* a = host.matrix({{1, 0, 0, 0}, {0, -2, 0, 0}, {0, 0, 2, 0}, {0, 0, 0, 3}, {0, 0, 0, 0}});
  const auto parts = host.parts(svd(c, a));
  ASSERT_EQ(parts.size(), 2u);
  expect_matrix(parts[0],
                {{0, 0, 0, -1}, {0, 0, -1, 0}, {0, -1, 0, 0}, {-1, 0, 0, 0}, {0, 0, 0, 0}});
  expect_matrix(parts[1], {{0, 0, 0, -1}, {0, 0, 1, 0}, {0, -1, 0, 0}, {-1, 0, 0, 0}});
  expect_matrix(svds(c, a), {{3}, {2}, {2}, {1}});
  expect_matrix(svds(c, host.matrix({{3, 0, 0}, {0, -5, 0}, {0, 0, 1}})), {{5}, {3}, {1}});
}

TEST_F(Svd, AZeroMatrixHasIdentityFactors) {
  for (aMatrix* zero : {host.matrix({{0, 0}, {0, 0}, {0, 0}}), host.lean(3, 2)}) {
    const auto parts = host.parts(svd(c, zero));
    ASSERT_EQ(parts.size(), 2u);
    expect_matrix(parts[0], {{1, 0}, {0, 1}, {0, 0}});
    expect_matrix(parts[1], {{1, 0}, {0, 1}});
    expect_matrix(svds(c, zero), {{0}, {0}});
  }
}

TEST_F(Svd, MessagesNameTheArgumentAtFault) {
  aMatrix* complex = host.complex_matrix({{1, 0}, {0, 1}});
  aMatrix* wide = host.matrix({{1, 2, 3}, {4, 5, 6}});
  for (auto function : {svd, svds}) {
    expect_error(function(c, host.scalar(1)), "must be array", 0, 1);
    expect_error(function(c, host.string("a")), "must be array", 0, 1);
    expect_error(function(c, complex), "must be real", 0, 1);
    expect_error(function(c, host.imaginary({{1, 2}})), "must be real", 0, 1);
    expect_error(function(c, wide), "number of rows less than number of columns", 0, 0);
  }
  EXPECT_STREQ(svds_core(wide), "number of rows less than number of columns");
}

TEST_F(Svd, FaultsAreNamed) {
  const auto square = [&](double x) { return host.matrix({{x, 2 * x}, {3 * x, x}}); };
  expect_fault(svd(c, square(kNan)), "floating point error");
  expect_error(svds(c, square(kNan)), "too many iterations", 0, 0);
  expect_fault(svd(c, square(kInf)), "floating point error");
  expect_fault(svd(c, square(1e200)), "overflow");
  expect_error(svds(c, square(1e200)), "too many iterations", 0, 0);
}

// The first root of a step is guarded in svd_core only; svds_core goes on with an infinite one.
TEST_F(Svd, OnlySvdGuardsTheFirstRoot) {
  const auto equal = [&](double x) { return host.matrix({{x, x}, {x, x}}); };
  EXPECT_STREQ(svd_core(equal(1.5e154), equal(0), host.column({0, 0})), "overflow");
  EXPECT_STREQ(svds_core(equal(1.5e154)), "too many iterations");
  // The second root is guarded in both.
  EXPECT_STREQ(svds_core(host.matrix({{4e153, 8e153}, {1.2e154, 4e153}})), "overflow");
}

}  // namespace
}  // namespace matrix_pack
