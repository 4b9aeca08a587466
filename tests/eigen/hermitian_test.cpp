// The Hermitian eigenvalues under the complex 2-norm, and the bits of their kernels.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "eigen/cores.hpp"
#include "eigen/hermitian/eigenvalues.hpp"
#include "eigen/hermitian/plain.hpp"
#include "eigen/hermitian/tridiagonal_kernels.hpp"
#include "pack/numeric/complex_vector_kernels.hpp"
#include "tests/support/eigen_zoo.hpp"
#include "tests/support/kernel_sets.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using HermitianEigenvalues = InHost;
using HermitianKernels = InEveryKernelSet;

// Eigenvalues of D^H T D with a diagonal D of phases: those of T.
std::vector<double> eigenvalues(const Dense& t, double phase) {
  TestHost host;
  std::vector<StdComplex> z;
  for (int j = 0; j < t.cols; ++j)
    for (int i = 0; i < t.rows; ++i)
      z.push_back(i == j ? t(i, i) : t(i, j) * std::polar(1.0, phase * (i * i - j * j)));
  std::vector<double> d(static_cast<std::size_t>(t.rows));
  aMatrix* a = host.complex_matrix(t.rows, t.cols, z);
  EXPECT_EQ(hermitian_eigenvalues(a, d.data()), nullptr);
  return d;
}

// Those of a symmetric matrix, which another method finds; turned by phases, too.
TEST_F(HermitianEigenvalues, AreThoseOfTheSymmetricMatrix) {
  WorstRatio worst("Hermitian eigenvalues against symmetric ones", 10);
  for (const int n : {1, 2, 3, 5, 10, 33, 66})
    for (const auto& [name, a, imaginary] : structures(n, n, 3)) {
      const Dense t = mirrored(a);
      // Squares of squares have no room for extreme sizes.
      if (size_of(t) > 1e50 || (size_of(t) > 0 && size_of(t) < 1e-50)) continue;
      TestHost host;
      aMatrix* values = nullptr;
      ASSERT_EQ(symmetric_eigenvalues(c, host.matrix(n, n, t.a), &values), nullptr);
      std::vector<double> known = re_parts(values);
      std::sort(known.begin(), known.end());
      for (const double phase : {0.0, 0.7}) {
        const std::vector<double> d = eigenvalues(t, phase);
        EXPECT_TRUE(std::is_sorted(d.begin(), d.end())) << name;
        for (std::size_t k = 0; k < d.size(); ++k)
          if (d[k] != known[k])
            worst.expect(std::fabs(d[k] - known[k]) / (n * 0x1p-52 * size_of(t)), name);
      }
    }
}

TEST_F(HermitianEigenvalues, DiagonalMatricesAreOnlySorted) {
  const double x[] = {3, -1, 2, 3, 0};
  EXPECT_EQ(eigenvalues(filled(5, 5, [&](int i, int j) { return i == j ? x[i] : 0; }), 0),
            (std::vector<double>{-1, 0, 2, 3, 3}));
}

// Only the lower triangle is read, and of the diagonal only the real part.
TEST_F(HermitianEigenvalues, ReadTheLowerTriangle) {
  double d[2];
  aMatrix* a = host.complex_matrix({{{2, kNan}, {kNan, kNan}}, {{0, 1}, {2, kNan}}});
  EXPECT_EQ(hermitian_eigenvalues(a, d), nullptr);
  EXPECT_NEAR(d[0], 1, 4 * 0x1p-52);
  EXPECT_NEAR(d[1], 3, 4 * 0x1p-52);
}

// Steep steps down and up make one eigenvalue take 22 of the 30 iterations that it may have. (No
// matrix is known that takes all of them.)
TEST_F(HermitianEigenvalues, MayTakeManyIterations) {
  constexpr int kNone = -1000, n = 14;
  const int diagonal[n] = {80, 125, 78, 106, 104, 98, -99, 97, -1, 94, 91, 86, -137, 83};
  const int beside[n] = {123, 124, 114, 109, 105, 101, 98, 97, 94, 91, 88, 87, 82, kNone};
  const Dense t = filled(n, n, [&](int i, int j) {
    return i == j                 ? std::ldexp(1, diagonal[i])
           : std::abs(i - j) == 1 ? std::ldexp(1, beside[std::min(i, j)])
                                  : 0;
  });
  const std::vector<double> d = eigenvalues(t, 0);
  EXPECT_NEAR(std::accumulate(d.begin(), d.end(), 0.0), std::ldexp(1, 125), std::ldexp(1, 107));
}

TEST_F(HermitianEigenvalues, MessagesAndNan) {
  double d[3];
  EXPECT_STREQ(hermitian_eigenvalues(host.complex_matrix(0, 0, {}), d), "invalid dimension");
  EXPECT_STREQ(hermitian_eigenvalues(host.complex_matrix({{1, 2}}), d), "must be square");
  const StdComplex nan(kNan, kNan);
  EXPECT_STREQ(hermitian_eigenvalues(host.complex_matrix({{1, 2, 3}, {2, nan, 4}, {3, 4, 5}}), d),
               "too many iterations");
}

struct Complexes {
  Complexes(int rows, int cols, unsigned seed)
      : re(random_dense(rows, cols, seed)), im(random_dense(rows, cols, seed + 1)) {}
  ComplexView array() { return {re.a.data(), im.a.data(), re.rows}; }
  ComplexView vector() { return {re.a.data(), im.a.data()}; }
  bool operator==(const Complexes& other) const { return re.a == other.re.a && im.a == other.im.a; }
  Dense re, im;
};

TEST_P(HermitianKernels, OnePassUpdatesAndMultiplies) {
  for (const int n : {1, 2, 3, 4, 9, 10, 11, 17, 18, 40})
    for (const auto& [update, multiply] : {std::pair{true, true}, {true, false}, {false, true}}) {
      const ComplexView absent = {nullptr, nullptr};
      Complexes a(n + 2, n, 1), v(n, 1, 3), q(n, 1, 5), x(n, 1, 7), w(n, 1, 9);
      Complexes expected_a = a, expected_w = w;
      if (update) plain::update(n, expected_a.array(), v.vector(), q.vector());
      if (multiply)
        plain::multiply_hermitian(n, expected_a.array(), x.vector(), expected_w.vector());
      hermitian_kernels().update_multiply(
          n, a.array(), update ? v.vector() : absent, update ? q.vector() : absent,
          multiply ? x.vector() : absent, multiply ? w.vector() : absent);
      EXPECT_TRUE(a == expected_a && w == expected_w) << n;
    }
}

TEST_P(HermitianKernels, SumsHaveTheOneOrder) {
  for (const int n : {1, 7, 8, 9, 31, 100}) {
    Complexes z(n, 1, 4);
    const ComplexView x = z.vector();
    EXPECT_EQ(complex_vector_kernels().sum_magnitudes(n, x), plain::sum(n, [&](std::ptrdiff_t k) {
                return std::fabs(x.re[k]) + std::fabs(x.im[k]);
              }));
    EXPECT_EQ(complex_vector_kernels().sum_squares(n, x), plain::sum(n, [&](std::ptrdiff_t k) {
                return x.re[k] * x.re[k] + x.im[k] * x.im[k];
              }));
  }
}

IN_EVERY_KERNEL_SET(HermitianKernels);

}  // namespace
}  // namespace matrix_pack
