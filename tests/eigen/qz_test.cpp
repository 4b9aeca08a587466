// The QZ drivers and their stages: what they accept, find, count as zero and list.
#include <cfenv>
#include <limits>

#include "eigen/qz/driver.hpp"
#include "eigen/qz/stages.hpp"
#include "tests/support/eigen_zoo.hpp"
#include "tests/support/sanitized.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using QzDriver = InHost;

aMatrix* value_of(TestHost& host, const Dense& m) {
  return host.matrix(m.rows, m.cols, m.a);
}

// What a driver delivers; the vectors are those of genvecs_driver, the rest must be of both.
struct Found {
  std::string message;
  int count = 0;
  std::vector<StdComplex> values;
  aMatrix* vectors = nullptr;
};

// Runs both drivers on copies of the pair. The two must agree to the bit.
Found drive(TestHost& host, const Dense& a, const Dense& b) {
  Found found;
  std::feclearexcept(FE_ALL_EXCEPT);
  aMatrix* values = nullptr;
  aMatrix* values_again = nullptr;
  int count = 0;
  const char* message =
      genvals_driver(host.context(), value_of(host, a), value_of(host, b), &values, &count);
  const char* message_again = genvecs_driver(host.context(), value_of(host, a), value_of(host, b),
                                             &values_again, &found.vectors, &found.count);
  EXPECT_STREQ(message, message_again);
  EXPECT_FALSE(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW))
      << "a guarded call would have stopped";
  found.message = message == nullptr ? "" : message;
  if (message != nullptr) return found;
  EXPECT_EQ(count, found.count);
  EXPECT_EQ(values == nullptr, count == 0) << "a matrix exactly when something is listed";
  EXPECT_EQ(found.vectors == nullptr, count == 0);
  if (count == 0) return found;
  EXPECT_TRUE(values->im != nullptr && values_again->im != nullptr);
  found.values = elements(values);
  EXPECT_EQ(found.values, elements(values_again));
  EXPECT_EQ(found.vectors->cols, count);
  return found;
}

Dense diagonal(const std::vector<double>& d) {
  const int n = static_cast<int>(d.size());
  return filled(n, n, [&](int i, int j) { return i == j ? d[static_cast<std::size_t>(i)] : 0.0; });
}

// Expects vectors that belong to the values, and of a complex pair the positive imaginary part
// first and conjugate vectors. Gives the number of these pairs.
int check(const Dense& a, const Dense& b, int finite, const std::string& at, WorstRatio& worst) {
  SCOPED_TRACE(at);
  TestHost host;
  const Found found = drive(host, a, b);
  EXPECT_EQ(found.message, "");
  EXPECT_TRUE(finite < 0 || found.count == finite) << found.count;
  if (found.count == 0) return 0;
  worst.expect(eigen_ratio(value_of(host, a), value_of(host, b), found.values, found.vectors), at);
  int complex_pairs = 0;
  for (int j = 0; j < found.count; ++j) {
    const auto at_j = static_cast<std::size_t>(j);
    if (found.values[at_j].imag() == 0) continue;
    if (++j == found.count) return ADD_FAILURE() << "half a pair", 0;
    EXPECT_GT(found.values[at_j].imag(), 0);
    EXPECT_LT(found.values[at_j + 1].imag(), 0);
    for (int i = 0; i < a.rows; ++i) {
      EXPECT_EQ(re(found.vectors, i, j - 1), re(found.vectors, i, j));
      EXPECT_EQ(im(found.vectors, i, j - 1), -im(found.vectors, i, j));
    }
    ++complex_pairs;
  }
  return complex_pairs;
}

// Every structure against a random matrix, in either place; and where there are zeros of B.
TEST_F(QzDriver, ResidualsAreSmallAndPairsStandTogether) {
  WorstRatio worst("QZ residual", 5);
  int complex_pairs = 0;
  for (const int n : {2, 3, 4, 5, 8, 9, 16, 33, 65}) {
    if (kSanitized && n > 60) continue;
    const Dense a = random_dense(n, n, 11), b = random_dense(n, n, 12);
    for (const auto& [name, m, imaginary] : structures(n, n, 5)) {
      if (name.starts_with("big") || name.starts_with("small")) continue;
      complex_pairs += check(m, b, -1, name + " first", worst);
      complex_pairs += check(a, m, -1, name + " second", worst);
    }
    const auto scaled = [](const Dense& m, double factor) {
      return changed(m, [=](int, int, double x) { return x * factor; });
    };
    const std::string order = " n = " + std::to_string(n);
    check(a, a, n, "A = B" + order, worst);
    check(scaled(b, 3), b, n, "exactly triple" + order, worst);
    check(product(b, filled(n, n, tridiagonal(0, 2, 1))), b, n, "hidden Jordan block" + order,
          worst);
    check(scaled(a, 1e140), scaled(b, 1e150), n, "both large" + order, worst);
    check(scaled(a, 1e90), scaled(b, 1e-9), n, "large against small" + order, worst);
    const Dense hessenberg = changed(a, [](int i, int j, double x) { return i > j + 1 ? 0 : x; });
    const Dense triangle = changed(b, [](int i, int j, double x) { return i > j ? 0 : x; });
    for (const auto& [first, second, finite] : {std::tuple{0, 0, n - 1},
                                                {n - 1, n - 1, n - 1},
                                                {n / 2, n / 2, n - 1},
                                                {0, n - 1, -1},
                                                {n / 2 - 1, n / 2, -1}}) {
      Dense with_zeros = triangle, diagonal = identity_dense(n);
      with_zeros(first, first) = with_zeros(second, second) = 0;
      diagonal(first, first) = diagonal(second, second) = 0;
      const std::string at =
          "zeros of B at " + std::to_string(first) + ", " + std::to_string(second) + order;
      check(hessenberg, with_zeros, finite, at, worst);
      check(a, diagonal, first == second ? n - 1 : n - 2, at + ", diagonal", worst);
    }
  }
  EXPECT_GT(complex_pairs, 50);
}

// The negative of A, or of B, has the negative eigenvalues, to the bit, where no zeros have signs:
// what is decided by magnitudes is decided alike. Of a pair, the other one comes first then.
TEST_F(QzDriver, SignsMakeNoDifference) {
  const auto negative = [](const Dense& m) {
    return changed(m, [](int, int, double x) { return -x; });
  };
  const auto magnitudes = [](const Found& found) {
    std::vector<double> all;
    for (const StdComplex& z : elements(found.vectors))
      all.insert(all.end(), {std::fabs(z.real()), std::fabs(z.imag())});
    return all;
  };
  for (const int n : {2, 3, 5, 9, 33})
    for (unsigned seed = 0; seed < 20; ++seed) {
      const Dense a = random_dense(n, n, seed), b = random_dense(n, n, seed + 100);
      const Found usual = drive(host, a, b);
      for (const Found& found : {drive(host, negative(a), b), drive(host, a, negative(b))}) {
        ASSERT_EQ(found.count, usual.count);
        for (std::size_t k = 0; k < found.values.size(); ++k)
          EXPECT_EQ(found.values[k], -std::conj(usual.values[k])) << n << " " << seed;
        EXPECT_EQ(magnitudes(found), magnitudes(usual)) << n << " " << seed;
      }
    }
}

TEST_F(QzDriver, ShapesAreCheckedInOrder) {
  const auto message = [&](aMatrix* a, aMatrix* b) {
    aMatrix* values = nullptr;
    int count = 0;
    return std::string(genvals_driver(c, a, b, &values, &count));
  };
  EXPECT_EQ(message(host.lean(0, 0), host.lean(2, 3)), "invalid dimension");
  EXPECT_EQ(message(host.lean(2, 3), host.lean(1, 0)), "invalid dimension");
  EXPECT_EQ(message(host.lean(2, 3), host.lean(4, 4)), "must be square");
  EXPECT_EQ(message(host.lean(4, 4), host.lean(3, 2)), "must be square");
  EXPECT_EQ(message(host.lean(4, 4), host.lean(3, 3)), "array size mismatch");
}

std::vector<StdComplex> values_of(const Dense& a, const Dense& b) {
  TestHost host;
  return drive(host, a, b).values;
}

using Values = std::vector<StdComplex>;

Values real(std::initializer_list<double> numbers) {
  return Values(numbers.begin(), numbers.end());
}

// By their index on the diagonal: what is finite as alpha / beta, 0 / 0 as 0, the infinite not.
TEST_F(QzDriver, ListsInTheOrderOfTheDiagonal) {
  EXPECT_EQ(values_of(diagonal({6}), diagonal({-4})), real({-1.5}));
  EXPECT_EQ(values_of(diagonal({0}), diagonal({0})), real({0}));
  EXPECT_EQ(values_of(diagonal({6}), diagonal({0})), Values());
  EXPECT_EQ(values_of(diagonal({5, 3, 0, 4, 0}), diagonal({1, 0, 0, -2, 8})), real({5, 0, -2, 0}));
}

// sqrt(n) eps is still zero, the next number is not.
TEST_F(QzDriver, SmallAlphaAndBetaCountAsZero) {
  const double zero = std::sqrt(2.0) * 0x1p-52;
  const double more = std::nextafter(zero, 1);
  const Dense one = identity_dense(2);
  EXPECT_EQ(values_of(diagonal({zero, 1}), one), real({0, 1}));
  EXPECT_EQ(values_of(diagonal({-more, 1}), one), real({-more, 1}));
  EXPECT_EQ(values_of(one, diagonal({zero, 1})), real({1}));
  EXPECT_EQ(values_of(one, diagonal({more, 1})), real({1 / more, 1}));
  EXPECT_EQ(values_of(diagonal({zero, 1}), diagonal({zero, 1})), real({0, 1}));
}

// The two of a pair have betas of their own, and so imaginary parts of their own: in a tiny problem
// one of these may count as zero.
TEST_F(QzDriver, OneOfAPairMayBeTinyOrInfinite) {
  const Found second = drive(
      host,
      {2,
       2,
       {3.5848208641483966e-16, 7.86230941047114e-16, -2.98838044775872e-16,
        -4.460237591529929e-16}},
      {2,
       2,
       {-0.02935807897683495, 0.1671487944828112, -0.019581625532336482, -0.19076575746273292}});
  ASSERT_EQ(second.count, 2);
  EXPECT_NE(second.values[0].imag(), 0);
  EXPECT_EQ(second.values[1].imag(), 0);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(re(second.vectors, i, 1), re(second.vectors, i, 0));
    EXPECT_EQ(im(second.vectors, i, 1), -im(second.vectors, i, 0));
  }
  // The first is listed as the real number that it is, the second with its own vector.
  const Found first =
      drive(host, {2, 2, {0, 0x1p-53, 0x1p-51, 0}}, {2, 2, {0x1p-6, 0x1p-53, 0x1.4p-52, -0x1p-52}});
  ASSERT_EQ(first.count, 2);
  EXPECT_EQ(first.values[0], 0.0);
  EXPECT_LT(first.values[1].imag(), 0);
  EXPECT_EQ(im_parts(first.vectors)[0], 0);
  EXPECT_EQ(im_parts(first.vectors)[1], 0);
  EXPECT_EQ(im(first.vectors, 1, 1), -1);
  // The first is infinite, the second is not.
  const Found alone = drive(host, {2, 2, {-0x1.2p-51, -0x1.8p-53, 0x1p-53, -0x1.3p-50}},
                            {2, 2, {0x1p-54, -0x1.cp-52, 0x1.4p-52, 0}});
  ASSERT_EQ(alone.count, 1);
  EXPECT_LT(alone.values[0].imag(), 0);
  // An infinite pair leaves no imaginary array behind.
  const Dense turning = {3, 3, {0, -1, 0, 1, 0, 0, 0, 0, 0}};
  const Found none = drive(host, turning, diagonal({1e-17, 1e-17, 0}));
  ASSERT_EQ(none.values, real({0}));
  EXPECT_EQ(none.vectors->im, nullptr);
}

// The discriminant of [1 x; -x 1] in its scaled block is -(x / (1 + x))^2.
TEST_F(QzDriver, TinyDiscriminantMeansADoubleRealEigenvalue) {
  const double bound = std::sqrt(2.0) * 2.220446049250313e-14;
  const auto block = [](double discriminant) {
    const double root = std::sqrt(discriminant);
    const double x = root / (1 - root);
    return Dense(2, 2, {1, -x, x, 1});
  };
  for (const StdComplex& value : values_of(block(0.999 * bound), identity_dense(2))) {
    EXPECT_EQ(value.imag(), 0);
    EXPECT_NEAR(value.real(), 1, 4e-7);
  }
  const Values pair = values_of(block(1.001 * bound), identity_dense(2));
  EXPECT_NEAR(pair[0].imag(), std::sqrt(bound), 1e-9);
  EXPECT_EQ(pair[1], std::conj(pair[0]));
}

// Both rows of the singular A - e B are as large: the first is taken, which shows in the signs.
TEST_F(QzDriver, ATieSplitsABlockByItsFirstRow) {
  const Found found = drive(host, {2, 2, {0, -3, 0, -3}}, identity_dense(2));
  EXPECT_EQ(found.values, real({-3, 0}));
  EXPECT_LT(re(found.vectors, 1, 0), 0);
  EXPECT_LT(re(found.vectors, 0, 1), 0);
  EXPECT_GT(re(found.vectors, 1, 1), 0);
}

// Where nothing traps, numbers that never compare small end after the steps of one block.
TEST_F(QzDriver, NotANumberEnds) {
  for (const int n : {3, 9})
    for (const double bad : {std::numeric_limits<double>::quiet_NaN(), HUGE_VAL})
      for (const bool in_a : {true, false}) {
        Dense a = random_dense(n, n, 1);
        Dense b = random_dense(n, n, 2);
        (in_a ? a : b)(n / 2, n / 2) = bad;
        std::vector<Reflector2> pairs(static_cast<std::size_t>(2 * n));
        std::vector<Reflector3> triples(pairs.size());
        const QzPair pair = {n, a.a.data(), b.a.data(), nullptr};
        qz_reduce(pair, pairs.data());
        EXPECT_STREQ(qz_iterate(pair, pairs.data(), triples.data()), "too many iterations")
            << n << bad << in_a;
      }
}

}  // namespace
}  // namespace matrix_pack
