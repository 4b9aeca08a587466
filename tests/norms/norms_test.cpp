// The norms: exact values, relations, messages and extreme elements; and the Hermitian eigenvalues
// under the complex 2-norm.
#include "norms/norms.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "eigen/hermitian/eigenvalues.hpp"
#include "norms/norm_cores.hpp"
#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(Norms, ValuesOfSmallMatricesAreExact) {
  TestHost host;
  EfiCallContext* c = host.context();
  aMatrix* a = host.matrix({{1, -2, 3}, {-4, 5, -6}, {7, -8, 20}});
  expect_number(norm1(c, a), 29);
  expect_number(normi(c, a), 35);
  expect_number(norme(c, host.matrix({{1, 2}, {2, 4}})), 5);
  expect_number(norm2(c, host.matrix({{3, 0}, {0, -5}})), 5);
  // 3 + 4i, 5 + 12i, 8 - 6i and 2i: the moduli are 5, 13, 10 and 2.
  aMatrix* z = host.complex_matrix({{{3, 4}, {5, 12}}, {{8, -6}, {0, 2}}});
  expect_number(norm1(c, z), 15);
  expect_number(normi(c, z), 18);
  expect_number(norme(c, z), std::sqrt(25.0 + 169 + 100 + 4));
  expect_number(norm2(c, host.complex_matrix({{{0, 0}, {0, -3}}, {2, 0}})), 3);
  expect_number(norm2(c, host.complex_matrix({{{3, 4}}})), 5);
}

// One nonzero element at every place; without and with an imaginary array, and without a real one.
TEST(Norms, ASingleElementIsItsMagnitude) {
  TestHost host;
  EfiCallContext* c = host.context();
  for (int n : {1, 2, 5})
    for (int at = 0; at < n * n; ++at) {
      std::vector<double> x(static_cast<std::size_t>(n * n));
      x[static_cast<std::size_t>(at)] = -7;
      const std::vector<Complex> z(x.begin(), x.end());
      std::vector<Complex> iz = z;
      for (Complex& element : iz) element *= Complex(0, 1);
      aMatrix* imaginary = host.complex_matrix(n, n, iz);
      ::operator delete(std::exchange(imaginary->re, nullptr));
      for (aMatrix* a : {host.matrix(n, n, x), host.complex_matrix(n, n, z), imaginary})
        for (auto norm : {norm1, norm2, norme, normi}) expect_number(norm(c, a), 7);
    }
  for (auto norm : {norm1, norm2, norme, normi}) {
    expect_number(norm(c, host.lean(3, 3)), 0);
    expect_number(norm(c, host.complex_matrix({{0, 0}, {0, 0}})), 0);
  }
}

TEST(Norms, ComplexNorm2AgreesWithTheSingularValues) {
  WorstRatio worst("complex norm2 against singular values");
  for (const int n : {1, 2, 3, 5, 8, 9, 33})
    for (const auto& [name, a] : zoo(n, n, 31)) {
      // The eigenvalue iteration multiplies squares of squares: it has no room for extreme sizes.
      if (size_of(a) > 1e50 || (size_of(a) > 0 && size_of(a) < 1e-50)) continue;
      TestHost host;
      const double real = real_number(norm2(host.context(), host.matrix(n, n, a.a)));
      // Rows and columns turned by phases, in quarters and fifths of a right angle.
      std::vector<Complex> z;
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) z.push_back(a(i, j) * std::polar(1.0, i * 0.25 + j * 0.3));
      const double complex = real_number(norm2(host.context(), host.complex_matrix(n, n, z)));
      if (real == 0) {
        EXPECT_EQ(complex, 0) << name;
      } else {
        EXPECT_LT(worst.note(std::fabs(complex - real) / (n * 0x1p-52 * real), name), 10) << name;
      }
    }
}

// Eigenvalues of D^H T D with a diagonal D of phases: those of T.
std::vector<double> eigenvalues(const Dense& t, double phase) {
  TestHost host;
  std::vector<Complex> z;
  for (int j = 0; j < t.cols; ++j)
    for (int i = 0; i < t.rows; ++i)
      z.push_back(i == j ? t(i, i) : t(i, j) * std::polar(1.0, phase * (i * i - j * j)));
  std::vector<double> d(static_cast<std::size_t>(t.rows));
  aMatrix* a = host.complex_matrix(t.rows, t.cols, z);
  EXPECT_EQ(hermitian_eigenvalues(a, d.data()), nullptr);
  return d;
}

TEST(HermitianEigenvalues, AreTheKnownOnes) {
  WorstRatio worst("Hermitian eigenvalues against known values");
  const double pi = std::acos(-1.0);
  const auto check = [&](const char* name, const Dense& t, std::vector<double> known) {
    std::sort(known.begin(), known.end());
    const double size = std::max(std::fabs(known.front()), std::fabs(known.back()));
    for (const double phase : {0.0, 0.7}) {
      const std::vector<double> d = eigenvalues(t, phase);
      EXPECT_TRUE(std::is_sorted(d.begin(), d.end()));
      for (std::size_t k = 0; k < d.size(); ++k)
        EXPECT_LT(worst.note(std::fabs(d[k] - known[k]) / (t.rows * 0x1p-52 * size), name), 10)
            << name << " " << t.rows;
    }
  };
  for (const int n : {1, 2, 3, 5, 10, 33, 100}) {
    std::vector<double> sines, pairs, graded;
    for (int k = 1; k <= n; ++k) {
      sines.push_back(4 * std::pow(std::sin(k * pi / (2 * (n + 1))), 2));
      pairs.push_back(k == 1 ? n : 0);
      graded.push_back(std::pow(10, -k));
    }
    check("second difference",
          filled(n, n, [](int i, int j) { return i == j                 ? 2
                                                 : std::abs(i - j) == 1 ? -1
                                                                        : 0; }),
          sines);
    check("ones", filled(n, n, [](int, int) { return 1; }), pairs);
    const Dense q = with_singular_values(n, n, 3, [](int) { return 1; });
    const Dense scaled =
        filled(n, n, [&](int i, int j) { return q(i, j) * graded[std::size_t(j)]; });
    const Dense a = product(scaled, transposed(q));
    check("graded", filled(n, n, [&](int i, int j) { return i < j ? a(j, i) : a(i, j); }), graded);
  }
}

TEST(HermitianEigenvalues, DiagonalMatricesAreOnlySorted) {
  const auto diagonal = [](std::vector<double> x) {
    const int n = static_cast<int>(x.size());
    return filled(n, n, [&](int i, int j) { return i == j ? x[std::size_t(i)] : 0; });
  };
  EXPECT_EQ(eigenvalues(diagonal({3, -1, 2, 3, 0}), 0), (std::vector<double>{-1, 0, 2, 3, 3}));
  EXPECT_EQ(eigenvalues(diagonal({1, 1, 1}), 0), (std::vector<double>{1, 1, 1}));
  EXPECT_EQ(eigenvalues(diagonal({0, 0, 0}), 0), (std::vector<double>{0, 0, 0}));
  EXPECT_EQ(eigenvalues(diagonal({-5}), 0), (std::vector<double>{-5}));
}

// Only the lower triangle is read, and of the diagonal only the real part.
TEST(HermitianEigenvalues, ReadTheLowerTriangle) {
  TestHost host;
  double d[2];
  aMatrix* a = host.complex_matrix({{{2, kNan}, {kNan, kNan}}, {{0, 1}, {2, kNan}}});
  EXPECT_EQ(hermitian_eigenvalues(a, d), nullptr);
  EXPECT_NEAR(d[0], 1, 4 * 0x1p-52);
  EXPECT_NEAR(d[1], 3, 4 * 0x1p-52);
}

TEST(HermitianEigenvalues, MessagesAndNan) {
  TestHost host;
  double d[3];
  EXPECT_STREQ(hermitian_eigenvalues(host.complex_matrix(0, 0, {}), d), "invalid dimension");
  EXPECT_STREQ(hermitian_eigenvalues(host.complex_matrix({{1, 2}}), d), "must be square");
  const Complex nan(kNan, kNan);
  EXPECT_STREQ(hermitian_eigenvalues(host.complex_matrix({{1, 2, 3}, {2, nan, 4}, {3, 4, 5}}), d),
               "too many iterations");
  aMatrix* a = host.complex_matrix({{1, 2}, {2, 1}});
  for (int nth : {1, 2}) {
    AllocationFaults faults(nth);
    EXPECT_STREQ(hermitian_eigenvalues(a, d), "out of memory");
  }
}

TEST(Norms, MessagesNameTheArgumentAtFault) {
  TestHost host;
  EfiCallContext* c = host.context();
  for (auto norm : {norm1, norm2, norme, normi}) {
    expect_error(norm(c, host.scalar(1)), "must be array", 0, 1);
    expect_error(norm(c, host.string("a")), "must be array", 0, 1);
    expect_error(norm(c, host.matrix({{1, 2, 3}, {4, 5, 6}})), "must be square", 0, 1);
    expect_error(norm(c, host.complex_matrix({{1, 2}})), "must be square", 0, 1);
  }
  for (auto core : {norm1_real, norm1_complex, normi_real, normi_complex}) {
    double norm;
    EXPECT_STREQ(core(host.complex_matrix({{1, 2}}), &norm), "must be square");
  }
}

// The scaled modulus does not overflow early, the squares of norme do; under the guard of norme and
// normi a fault becomes a message, outside it an infinity or a NaN goes on.
TEST(Norms, ExtremeElements) {
  TestHost host;
  EfiCallContext* c = host.context();
  aMatrix* large = host.complex_matrix({{{3e200, 4e200}, 0}, {0, 0}});
  EXPECT_DOUBLE_EQ(real_number(norm1(c, large)), 5e200);
  EXPECT_DOUBLE_EQ(real_number(normi(c, large)), 5e200);
  expect_error(norme(c, large), "overflow", 0, 0);
  expect_number(norme(c, host.matrix({{1e-200}})), 0);
  expect_number(norm1(c, host.matrix({{kInf, 1}, {1, 1}})), kInf);
  expect_number(normi(c, host.matrix({{kInf, 1}, {1, 1}})), kInf);
  expect_number(norm1(c, host.complex_matrix({{{kInf, 1}}})), kInf);
  // A NaN is never the largest sum.
  expect_number(norm1(c, host.matrix({{kNan, 1}, {1, 1}})), 2);
  expect_error(normi(c, host.matrix({{kNan, 1}, {1, 1}})), "floating point error", 0, 0);
  expect_error(norm2(c, host.matrix({{kNan, 1}, {1, 1}})), "too many iterations", 0, 0);
  EXPECT_TRUE(std::isnan(real_number(norm2(c, host.complex_matrix({{{kNan, 0}}})))));
  for (const double x : {kNan, kInf, 1e308, 1e200, 1e-200})
    for (const int n : {1, 2, 40}) {
      const std::vector<Complex> z(static_cast<std::size_t>(n * n), {x, -x});
      for (auto norm : {norm1, norm2, norme, normi}) {
        Anyval* value = norm(c, host.complex_matrix(n, n, z));
        if (value->kind != kErrorKind) continue;
        const std::string message = static_cast<aError*>(value)->message->text;
        EXPECT_TRUE(message == "overflow" || message == "too many iterations" ||
                    message == "floating point error")
            << message;
      }
    }
}

}  // namespace
}  // namespace matrix_pack
