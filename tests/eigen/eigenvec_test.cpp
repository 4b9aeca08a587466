// eigenvec: residuals, exact facts, messages and extreme arguments.
#include <cmath>

#include "eigen/eigen.hpp"
#include "pack/exports.hpp"
#include "tests/support/eigen_zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using Eigenvec = InHost;

Anyval* vector_for(TestHost& host, aMatrix* m, StdComplex z) {
  return eigenvec(host.context(), m, host.scalar(z.real(), z.imag()));
}

TEST_F(Eigenvec, SolvesForEveryEigenvalueOfARandomMatrix) {
  // The shift by 1e-12 does not show: it only makes the first of ten solutions less of the vector.
  WorstRatio worst("eigenvec residual", 7);
  for (const int n : {1, 2, 3, 8, 9, 33, 66}) {
    const Specimen real = structures(n, n, 5)[0];
    for (const Specimen& a :
         {real, {"mirrored", mirrored(real.matrix)}, structures(n, n, 5, true)[0]}) {
      TestHost host;
      aMatrix* const m = make(host, a);
      for (const StdComplex& z : elements(as_result_matrix(eigenvals(c, m, 0.0)))) {
        const aMatrix* const x = as_result_matrix(vector_for(host, m, z));
        ASSERT_EQ(x->rows, n) << a.name;
        ASSERT_NE(x->im, nullptr);
        EXPECT_NEAR(norm_of(elements(x)), 1, 1e-14) << a.name;
        EXPECT_EQ(elements(x), elements(as_result_matrix(vector_for(host, m, z)))) << "once more";
        worst.expect(eigen_ratio(m, nullptr, {z}, x), a.name);
      }
    }
  }
}

TEST_F(Eigenvec, DiagonalMatricesGiveUnitVectors) {
  aMatrix* const m = host.matrix({{2, 0, 0}, {0, -1, 0}, {0, 0, 5}});
  for (const auto& [z, place] : {std::pair{2, 0}, {-1, 1}, {5, 2}}) {
    const aMatrix* const x = as_result_matrix(vector_for(host, m, z));
    for (int i = 0; i < 3; ++i) {
      EXPECT_NEAR(std::fabs(re(x, i, 0)), i == place ? 1 : 0, 1e-11);
      EXPECT_EQ(im(x, i, 0), 0);
    }
  }
}

TEST_F(Eigenvec, Messages) {
  aMatrix* const square = host.matrix({{1, 2}, {3, 4}});
  expect_error(eigenvec(c, host.scalar(1), square), "must be array", 0, 1);
  expect_error(eigenvec(c, host.matrix({{1, 2}}), square), "non-scalar value", 0, 2);
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

}  // namespace
}  // namespace matrix_pack
