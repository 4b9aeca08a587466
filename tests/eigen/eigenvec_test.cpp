// eigenvec: residuals, exact facts, messages and extreme arguments.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "eigen/eigen.hpp"
#include "eigen/inverse/scaled_lu.hpp"
#include "pack/exports.hpp"
#include "tests/support/eigen_zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using test::Complex;

Anyval* vector_for(TestHost& host, aMatrix* m, Complex z) {
  return eigenvec(host.context(), m, host.scalar(z.real(), z.imag()));
}

// |A x - z x| / (n eps |A|) for an x of unit length.
double vector_ratio(const SquareSpecimen& a, Complex z, const aMatrix* x) {
  double residual = 0;
  for (int i = 0; i < a.n; ++i) {
    Complex r = -z * Complex(re(x, i, 0), im(x, i, 0));
    for (int k = 0; k < a.n; ++k) r += a(i, k) * Complex(re(x, k, 0), im(x, k, 0));
    residual = std::hypot(residual, std::abs(r));
  }
  return residual / (a.n * 0x1p-52) / norm_of(a.a);
}

TEST(Eigenvec, SolvesForEveryEigenvalueOfARandomMatrix) {
  // The shift by 1e-12 does not show: it only makes the first of ten solutions less of the vector.
  WorstRatio worst("eigenvec residual");
  for (const int n : {1, 2, 3, 8, 9, 33, 66}) {
    for (const SquareSpecimen& a : {symmetric_zoo(n)[0], general_zoo(n)[0], complex_zoo(n)[0]}) {
      TestHost host;
      aMatrix* const m = a.on(host);
      const Snapshot before(m);
      for (const Complex& z : elements(as_result_matrix(eigenvals(host.context(), m, 0.0)))) {
        const aMatrix* const x = as_result_matrix(vector_for(host, m, z));
        ASSERT_EQ(x->rows, n) << a.name;
        ASSERT_NE(x->im, nullptr);
        EXPECT_NEAR(norm_of(elements(x)), 1, 1e-14) << a.name;
        EXPECT_LT(worst.note(vector_ratio(a, z, x), a.name), 7) << a.name;
      }
      EXPECT_TRUE(before.unchanged());
    }
  }
}

TEST(Eigenvec, DiagonalMatricesGiveUnitVectors) {
  TestHost host;
  aMatrix* const m = host.matrix({{2, 0, 0}, {0, -1, 0}, {0, 0, 5}});
  for (const auto& [z, place] : {std::pair{2, 0}, {-1, 1}, {5, 2}}) {
    const aMatrix* const x = as_result_matrix(vector_for(host, m, z));
    for (int i = 0; i < 3; ++i) {
      EXPECT_NEAR(std::fabs(re(x, i, 0)), i == place ? 1 : 0, 1e-11);
      EXPECT_EQ(im(x, i, 0), 0);
    }
  }
}

TEST(Eigenvec, TwoCallsGiveTheSameBits) {
  TestHost host;
  aMatrix* const m = complex_zoo(12)[0].on(host);
  const Complex z = elements(as_result_matrix(eigenvals(host.context(), m, 0.0)))[3];
  const aMatrix* const first = as_result_matrix(vector_for(host, m, z));
  const aMatrix* const second = as_result_matrix(vector_for(host, m, z));
  EXPECT_EQ(elements(first), elements(second));
}

TEST(Eigenvec, Messages) {
  TestHost host;
  EfiCallContext* const context = host.context();
  aMatrix* const square = host.matrix({{1, 2}, {3, 4}});
  expect_error(eigenvec(context, host.scalar(1), square), "must be array", 0, 1);
  expect_error(eigenvec(context, host.matrix({{1, 2}}), square), "non-scalar value", 0, 2);
  expect_error(vector_for(host, host.matrix({{1, 2}}), 1), "must be square", 0, 1);
  expect_error(vector_for(host, host.matrix({{1, 2e104}, {0, 1}}), 1), "overflow", 0, 0);
  expect_error(vector_for(host, host.imaginary({{1, 0}, {-2e104, 1}}), 1), "overflow", 0, 0);
  // The bound itself is accepted, and the diagonal knows none.
  as_result_matrix(vector_for(host, host.matrix({{1, 1e104}, {0, 2}}), 1));
  as_result_matrix(vector_for(host, host.matrix({{2e104, 0}, {0, 1}}), 1));
  // A row that is zero once it is shifted.
  expect_error(vector_for(host, host.matrix({{0, 0}, {1, 2}}), 1e-12), "singularity", 0, 0);
  // Far from every eigenvalue no start grows enough.
  expect_error(vector_for(host, square, 100), "not converging", 0, 0);
  // A hundredfold growth is enough, a little less is not: |1 / (1 - z + 1e-12)| on either side.
  as_result_matrix(vector_for(host, host.matrix({{1}}), 1 - 0.00999));
  expect_error(vector_for(host, host.matrix({{1}}), 1 - 0.01001), "not converging", 0, 0);
}

// P A = L U by the recorded exchanges, with multipliers that the scaled pivots bound.
TEST(Eigenvec, FactorsAreThoseOfTheMatrix) {
  WorstRatio worst("scaled LU residual");
  for (const int n : {1, 2, 5, 9, 40}) {
    const SquareSpecimen a = complex_zoo(n)[0];
    Dense re_part(n, n), im_part(n, n);
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) {
        re_part(i, j) = a(i, j).real();
        im_part(i, j) = a(i, j).imag();
      }
    std::vector<int> pivots(std::size_t(n), -1), rows;
    ASSERT_EQ(factor_scaled(n, {re_part.a.data(), im_part.a.data(), n}, pivots.data()),
              Status::done);
    for (int i = 0; i < n; ++i) rows.push_back(i);
    for (int i = 0; i < n; ++i)
      std::swap(rows[std::size_t(i)], rows[std::size_t(pivots[std::size_t(i)])]);
    const auto factor = [&](int i, int j) { return Complex(re_part(i, j), im_part(i, j)); };
    double residual = 0;
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) {
        Complex r = -a(rows[std::size_t(i)], j);
        for (int k = 0; k <= std::min(i, j); ++k) r += (k == i ? 1 : factor(i, k)) * factor(k, j);
        residual = std::hypot(residual, std::abs(r));
      }
    EXPECT_LT(worst.note(residual / (n * 0x1p-52) / norm_of(a.a), a.name), 2) << n;
  }
}

TEST(Eigenvec, ExtremeElementsEndInAValueOrADocumentedMessage) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  const double extremes[] = {
      std::numeric_limits<double>::quiet_NaN(), kInf, -kInf, 1e200, 1e-200, 5e-324, 1e104, -0.0};
  for (const int n : {1, 2, 5}) {
    for (const SquareSpecimen& usual : {general_zoo(n)[0], complex_zoo(n)[0]}) {
      for (const double x : extremes) {
        for (int where = -1; where < n * n; ++where) {
          TestHost host;
          SquareSpecimen a = usual;
          if (where >= 0) a.a[std::size_t(where)] = x;
          const Complex z = where < 0 ? x : 0.5;
          Anyval* const value = vector_for(host, a.on(host), z);
          if (value->kind == kMatrixKind || value == sError_OutOfMemory) continue;
          const std::string text = static_cast<aError*>(value)->message->text;
          EXPECT_TRUE(text == "overflow" || text == "singularity" || text == "not converging")
              << describe(value);
        }
      }
    }
  }
}

}  // namespace
}  // namespace matrix_pack
