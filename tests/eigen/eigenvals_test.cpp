// eigenvals and eigenvecs: residuals, known spectra, exact facts, messages, limits and extreme
// arguments.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "eigen/complex/qr_iteration.hpp"
#include "eigen/cores.hpp"
#include "pack/exports.hpp"
#include "tests/support/eigen_zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using test::Complex;

const double kPi = std::acos(-1.0);
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

constexpr int kOrders[] = {1, 2, 3, 5, 8, 9, 33, 66, 130};

Anyval* values_of(TestHost& host, aMatrix* m, double tolerance = 0) {
  return eigenvals(host.context(), m, host.scalar(tolerance));
}

std::vector<Complex> values_of(const SquareSpecimen& a) {
  TestHost host;
  return elements(as_result_matrix(values_of(host, a.on(host))));
}

// --- Residuals ---

// The values of `eigenvals` with the vectors of `eigenvecs`: a small residual says that both are
// right and in the same order.
void check_residual(const SquareSpecimen& a, double gate, WorstRatio& worst) {
  TestHost host;
  aMatrix* const m = a.on(host);
  const Snapshot before(m);
  const aMatrix* const values = as_result_matrix(values_of(host, m));
  const aMatrix* const vectors = as_result_matrix(eigenvecs(host.context(), m));
  ASSERT_EQ(values->rows, a.n) << a.name;
  ASSERT_EQ(vectors->cols, a.n) << a.name;
  EXPECT_LT(worst.note(eigen_ratio(a, elements(values), elements(vectors)), a.name), gate)
      << a.name;
  EXPECT_TRUE(before.unchanged()) << a.name;
  for (int j = 0; j < a.n; ++j) {
    double length = 0;
    for (int i = 0; i < a.n; ++i)
      length = std::hypot(length, std::hypot(re(vectors, i, j), im(vectors, i, j)));
    EXPECT_NEAR(length, 1, 1e-14) << a.name << " column " << j;
  }
}

TEST(Eigen, ResidualsAreSmallOverTheZoo) {
  WorstRatio symmetric("symmetric eigen residual");
  WorstRatio general("general eigen residual");
  WorstRatio complex("complex eigen residual");
  for (const int n : kOrders) {
    for (const SquareSpecimen& a : symmetric_zoo(n)) check_residual(a, 10, symmetric);
    for (const SquareSpecimen& a : general_zoo(n)) check_residual(a, 10, general);
    for (const SquareSpecimen& a : complex_zoo(n)) check_residual(a, 10, complex);
  }
}

TEST(Eigen, SymmetricVectorsAreOrthonormalAndReal) {
  WorstRatio worst("symmetric V'V - I");
  for (const int n : kOrders) {
    for (const SquareSpecimen& a : symmetric_zoo(n)) {
      TestHost host;
      aMatrix* const v = a.on(host);
      ASSERT_EQ(symmetric_eigenvectors(v), nullptr);
      EXPECT_EQ(v->im, nullptr);
      EXPECT_LT(worst.note(orthogonality_ratio({n, n, re_parts(v)}), a.name), 20) << a.name;
    }
  }
}

// The two cores of a kind share what is the same: the values are equal to the bit.
TEST(Eigen, BothCoresFindTheSameValuesInTheSameOrder) {
  for (const int n : {2, 5, 33, 130, 500}) {
    std::vector<SquareSpecimen> zoo = n < 500 ? general_zoo(n) : std::vector<SquareSpecimen>();
    // At this order, blocks that had split off used to be joined again.
    if (n == 500) {
      const Dense x = random_dense(n, n, 500);
      zoo.push_back(specimen("random", n, [&](int i, int j) { return x(i, j); }));
    }
    for (const SquareSpecimen& a : zoo) {
      TestHost host;
      aMatrix *values = nullptr, *others = nullptr, *vectors = nullptr;
      ASSERT_EQ(general_eigenvalues(host.context(), a.on(host), &values), nullptr);
      ASSERT_EQ(general_eigenvectors(host.context(), a.on(host), &others, &vectors), nullptr);
      EXPECT_TRUE(elements(values) == elements(others)) << a.name;
    }
    for (const SquareSpecimen& a : n < 500 ? complex_zoo(n) : std::vector<SquareSpecimen>()) {
      TestHost host;
      aMatrix *values = nullptr, *others = nullptr, *vectors = nullptr;
      ASSERT_EQ(complex_eigenvalues(host.context(), a.on(host), 0, &values), nullptr);
      ASSERT_EQ(complex_eigenvectors(host.context(), a.on(host), &others, &vectors), nullptr);
      EXPECT_TRUE(elements(values) == elements(others)) << a.name;
    }
  }
}

// --- Known spectra ---

// Matches each found value with the nearest known one that is left.
double distance(std::vector<Complex> found, std::vector<Complex> known) {
  EXPECT_EQ(found.size(), known.size());
  double worst = 0;
  for (const Complex& z : found) {
    const auto nearest = std::min_element(
        known.begin(), known.end(),
        [&](const Complex& a, const Complex& b) { return std::abs(a - z) < std::abs(b - z); });
    worst = std::max(worst, std::abs(*nearest - z));
    known.erase(nearest);
  }
  return worst;
}

std::vector<Complex> sequence(int n, const std::function<Complex(int)>& value) {
  std::vector<Complex> all;
  for (int k = 0; k < n; ++k) all.push_back(value(k));
  return all;
}

TEST(Eigen, SpectraAreTheKnownOnes) {
  for (const int n : {2, 3, 8, 10, 33, 100}) {
    const double unit = n * 0x1p-52;
    EXPECT_LT(
        distance(values_of(symmetric_zoo(n)[1]),
                 sequence(n, [n](int k) { return 2 - 2 * std::cos((k + 1) * kPi / (n + 1)); })),
        4 * unit);
    EXPECT_LT(
        distance(values_of(specimen("circulant", n,
                                    [n](int i, int j) { return 1.0 / (1 + (j - i + n) % n); })),
                 sequence(n,
                          [n](int k) {
                            Complex sum = 0;
                            for (int j = 0; j < n; ++j)
                              sum += std::polar(1.0 / (1 + j), 2 * kPi * j * k / n);
                            return sum;
                          })),
        20 * unit);
    // Without exceptional shifts the iteration would stand still on these.
    const auto root = [n](int k) { return std::polar(1.0, 2 * kPi * k / n); };
    const auto cycle = [n](int i, int j) { return i == (j + 1) % n ? 1.0 : 0.0; };
    EXPECT_LT(distance(values_of(specimen("cyclic", n, cycle)), sequence(n, root)), 20 * unit);
    EXPECT_LT(distance(values_of(complex_specimen("cyclic", n, cycle)), sequence(n, root)),
              20 * unit);
  }
  for (const int n : {2, 5, 10}) {
    const auto clement_value = [n](int k) { return Complex(n - 1 - 2 * k); };
    EXPECT_LT(
        distance(values_of(specimen("Clement", n, [n](int i, int j) { return clement(n, i, j); })),
                 sequence(n, clement_value)),
        1e-13 * n);
  }
  // A Hadamard matrix of order 8 is symmetric, its square 8 I, its trace 0.
  const auto hadamard = [](int i, int j) { return __builtin_parity(unsigned(i & j)) ? -1.0 : 1.0; };
  EXPECT_LT(distance(values_of(specimen("Hadamard", 8, hadamard)),
                     sequence(8, [](int k) { return k % 2 ? std::sqrt(8) : -std::sqrt(8); })),
            1e-14);
  // Similar to a nilpotent matrix of order 4: the values may be off by the fourth root of eps.
  const auto nilpotent = specimen("nilpotent", 4, [](int i, int j) {
    const double rows[4][4] = {{2, -1, 0, 0}, {4, -2, 1, 0}, {0, 0, 0, 1}, {0, 0, 0, 0}};
    return rows[i][j];
  });
  EXPECT_LT(distance(values_of(nilpotent), sequence(4, [](int) { return 0; })), 1e-3);
}

// --- Exact facts ---

TEST(Eigen, SmallMatricesGiveExactValues) {
  TestHost host;
  expect_matrix(values_of(host, host.matrix({{3}})), {{3}});
  expect_matrix(values_of(host, host.matrix({{2, 0, 0}, {0, -1, 0}, {0, 0, 5}})), {{2}, {-1}, {5}});
  // Both arrays are kept, though no imaginary part is nonzero.
  expect_complex_matrix(values_of(host, host.matrix({{1, 2, 3}, {0, 4, 5}, {0, 0, 6}})),
                        {{1}, {4}, {6}});
  expect_complex_matrix(values_of(host, host.matrix({{0, -1}, {1, 0}})), {{{0, 1}}, {{0, -1}}});
  // TOL is nothing to real matrices.
  expect_complex_matrix(values_of(host, host.matrix({{0, -1}, {1, 0}}), 10), {{{0, 1}}, {{0, -1}}});
  expect_complex_matrix(values_of(host, host.imaginary({{2, 0}, {0, 3}})), {{{0, 2}}, {{0, 3}}});
  const auto upper = [](int i, int j) { return i <= j ? 1 + i + 0.1 * j : 0; };
  for (const int n : {2, 3, 4, 9}) {
    const auto diagonal = sequence(n, [&](int k) { return upper(k, k); });
    EXPECT_EQ(values_of(specimen("upper", n, upper)), diagonal);
    EXPECT_EQ(values_of(complex_specimen("upper", n, upper)), diagonal);
    EXPECT_EQ(distance(values_of(specimen("lower", n, [&](int i, int j) { return upper(j, i); })),
                       diagonal),
              0);
  }
}

TEST(Eigen, SmallMatricesGiveExactVectors) {
  TestHost host;
  const auto vectors = [&](aMatrix* m) { return eigenvecs(host.context(), m); };
  expect_matrix(vectors(host.matrix({{-7}})), {{1}});
  expect_matrix(vectors(host.matrix({{3, 0}, {0, -2}})), {{1, 0}, {0, 1}});
  expect_complex_matrix(vectors(host.complex_matrix({{{5, 1}}})), {{1}});
  expect_complex_matrix(vectors(host.matrix({{1, 0}, {0.75, 2}})), {{0, 0.8}, {1, -0.6}});
  // Divisors that are zero, in matrices that are next to nothing or nothing.
  expect_complex_matrix(vectors(host.complex_matrix({{0, 0}, {0, 0}})), {{1, 0}, {0, 1}});
  const auto defective = elements(
      as_result_matrix(vectors(host.complex_matrix({{{0, 1e-310}, 1e-309}, {0, {0, 1e-310}}}))));
  EXPECT_EQ(defective[0], Complex(1));
  EXPECT_NEAR(std::abs(defective[2]), 1, 1e-10) << "but for a tiny one, the same vector again";
}

// Of a real matrix, values and vectors of a pair are conjugates to the bit, and the positive
// imaginary part comes first; before the host scales them, the first of the largest components of
// each vector is exactly 1.
TEST(Eigen, PairsAreConjugateAndLargestComponentsAreOne) {
  for (const int n : kOrders) {
    std::vector<SquareSpecimen> zoo = complex_zoo(n);
    for (SquareSpecimen& a : general_zoo(n)) zoo.push_back(a);
    for (const SquareSpecimen& a : zoo) {
      TestHost host;
      aMatrix *values = nullptr, *vectors = nullptr;
      const auto core = a.is_real ? general_eigenvectors : complex_eigenvectors;
      ASSERT_EQ(core(host.context(), a.on(host), &values, &vectors), nullptr) << a.name;
      for (int j = 0; j < n; ++j) {
        double largest = 0;
        for (int i = 0; i < n; ++i)
          largest = std::max(largest, std::hypot(re(vectors, i, j), im(vectors, i, j)));
        EXPECT_LE(largest, 1 + 1e-15) << a.name << " " << j;
        int ones = 0;
        for (int i = 0; i < n; ++i) ones += re(vectors, i, j) == 1 && im(vectors, i, j) == 0;
        EXPECT_GE(ones, 1) << a.name << " " << j;
        if (!a.is_real || !(im(values, j, 0) > 0)) continue;
        ASSERT_LT(j + 1, n) << a.name;
        EXPECT_EQ(re(values, j + 1, 0), re(values, j, 0)) << a.name;
        EXPECT_EQ(im(values, j + 1, 0), -im(values, j, 0)) << a.name;
        for (int i = 0; i < n; ++i) {
          EXPECT_EQ(re(vectors, i, j + 1), re(vectors, i, j)) << a.name;
          EXPECT_EQ(im(vectors, i, j + 1), -im(vectors, i, j)) << a.name;
        }
      }
    }
  }
}

// Parts smaller than TOL become 0, equal ones stay; only in the values of complex matrices, and
// only in those that the iteration finds.
TEST(Eigen, ToleranceChopsStrictly) {
  TestHost host;
  aMatrix* const one = host.complex_matrix({{{0.5, -0.25}}});
  expect_complex_matrix(values_of(host, one, 0.25), {{{0.5, -0.25}}});
  expect_complex_matrix(values_of(host, one, 0.5), {{{0.5, 0}}});
  expect_complex_matrix(values_of(host, one, 1), {{0}});
  expect_complex_matrix(eigenvecs(host.context(), one), {{1}});
  aMatrix* const dense = complex_zoo(6)[0].on(host);
  for (const Complex& z : elements(as_result_matrix(values_of(host, dense, 1e9))))
    EXPECT_EQ(z, Complex(0));
  expect_complex_matrix(values_of(host, host.complex_matrix({{{1, 1}, 1}, {0, {2, 2}}}), 10),
                        {{0}, {{2, 2}}});
}

// --- Messages, limits, extremes ---

TEST(Eigen, Messages) {
  TestHost host;
  EfiCallContext* const context = host.context();
  for (Anyval* wrong :
       {static_cast<Anyval*>(host.scalar(1)), static_cast<Anyval*>(host.string("a"))}) {
    expect_error(eigenvals(context, wrong, host.scalar(0)), "must be array", 0, 0);
    expect_error(eigenvecs(context, wrong), "must be array", 0, 0);
  }
  aMatrix* const wide = host.matrix({{1, 2, 3}, {4, 5, 6}});
  expect_error(values_of(host, wide), "must be square", 0, 1);
  expect_error(eigenvecs(context, wide), "must be square", 0, 1);
  expect_error(values_of(host, host.matrix(0, 0, {})), "invalid dimension", 0, 0);
  expect_error(eigenvecs(context, host.matrix(0, 0, {})), "invalid dimension", 0, 0);
  expect_error(eigenvecs(context, host.complex_matrix(0, 0, {})), "invalid dimension", 0, 0);
  expect_error(values_of(host, host.lean(2, 2)), "Null matrix or vector pointer.", 0, 0);
  expect_error(eigenvecs(context, host.lean(2, 2)), "Null matrix or vector pointer.", 0, 0);
  // A failed copy: `eigenvals` leaves it to the core, `eigenvecs` passes on what the copy says.
  for (aMatrix* m : {host.matrix({{1}}), host.matrix({{1, 2}, {3, 4}}), host.imaginary({{1}})}) {
    const auto fail_first = [&](auto call) {
      const AllocationFaults faults(1);
      return call();
    };
    expect_error(fail_first([&] { return eigenvals(context, m, 0.0); }),
                 "Null matrix or vector pointer.", 0, 0);
    expect_error(fail_first([&] { return eigenvecs(context, m); }), "out of memory", 0, 0);
  }
}

// Unguarded, a NaN never settles: every core runs into its limit.
TEST(Eigen, CoresGiveUpAtTheirLimits) {
  TestHost host;
  EfiCallContext* const context = host.context();
  aMatrix *values = nullptr, *vectors = nullptr;
  const auto symmetric = [&] { return host.matrix({{1, kNan}, {kNan, 2}}); };
  const auto general = [&] { return host.matrix({{1, kNan, 3}, {4, 5, 6}, {7, 8, kNan}}); };
  const auto complex = [&] { return host.complex_matrix({{{1, 1}, kNan}, {{2, 3}, 4}}); };
  EXPECT_STREQ(symmetric_eigenvalues(context, symmetric(), &values), "too many iterations");
  EXPECT_STREQ(symmetric_eigenvectors(symmetric()), "too many iterations");
  EXPECT_STREQ(general_eigenvalues(context, general(), &values), "too many iterations");
  EXPECT_STREQ(general_eigenvectors(context, general(), &values, &vectors), "too many iterations");
  EXPECT_STREQ(complex_eigenvalues(context, complex(), 0, &values), "too many iterations");
  EXPECT_STREQ(complex_eigenvectors(context, complex(), &values, &vectors), "too many iterations");
}

// One sweep more than the limit is one too many; the values may take 31, the vectors 30.
TEST(Eigen, ComplexIterationCountsItsSweeps) {
  const int n = 6;
  const SquareSpecimen a = complex_zoo(n)[0];
  double wr[n], wi[n];
  const auto run = [&](int most) {
    Dense h_re(n, n), h_im(n, n);
    for (int j = 0; j < n; ++j)
      for (int i = 0; i <= std::min(j + 1, n - 1); ++i) {
        h_re(i, j) = a(i, j).real();
        h_im(i, j) = a(i, j).imag();
      }
    const Balance whole = {n, 0, n - 1, n, nullptr};
    return complex_qr(whole, {h_re.a.data(), h_im.a.data(), n}, 0, most, wr, wi);
  };
  int needed = 1;
  while (run(needed) != nullptr) ++needed;
  EXPECT_GE(needed, 2);
  EXPECT_LE(needed, 10);
  EXPECT_STREQ(run(needed - 1), "too many iterations");
  EXPECT_EQ(kMostSweepsForValues, 31);
  EXPECT_EQ(kMostSweepsForVectors, 30);
}

bool is_value_or_message(const Anyval* value) {
  if (value->kind == kMatrixKind) return true;
  const std::string text = static_cast<const aError*>(value)->message->text;
  for (const char* message :
       {"floating point error", "overflow", "singularity", "too many iterations"})
    if (text == message) return true;
  return false;
}

// Through the handlers and, without the guard, through the exported forms.
TEST(Eigen, ExtremeElementsEndInAValueOrADocumentedMessage) {
  const double extremes[] = {kNan, kInf, -kInf, 1e200, 1e-200, 1e308, 5e-324, -0.0};
  for (const int n : {1, 2, 3, 6, 40}) {
    std::vector<SquareSpecimen> zoo = {symmetric_zoo(n)[0], general_zoo(n)[0], general_zoo(n)[5],
                                       complex_zoo(n)[0]};
    for (const SquareSpecimen& usual : zoo) {
      for (const double x : extremes) {
        for (const int where : {0, 1, n * n / 2, n * n - 1, -1}) {
          SquareSpecimen a = usual;
          for (int k = 0; k < n * n; ++k) {
            Complex& z = a.a[std::size_t(k)];
            if (where < 0) z = Complex(z.real() * x, a.is_real ? 0 : z.imag() * x);
            if (where == k) z = a.is_real ? Complex(x) : Complex(x, x);
          }
          TestHost host;
          EfiCallContext* const context = host.context();
          for (Anyval* value :
               {values_of(host, a.on(host)), eigenvecs(context, static_cast<Anyval*>(a.on(host))),
                eigenvals(context, a.on(host), 0.0), eigenvecs(context, a.on(host))})
            EXPECT_TRUE(is_value_or_message(value))
                << a.name << " " << x << " at " << where << ": " << describe(value);
        }
      }
    }
  }
}

}  // namespace
}  // namespace matrix_pack
