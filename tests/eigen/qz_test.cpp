// The QZ drivers and their stages: what they accept, find, count as zero and list.
#include <gtest/gtest.h>

#include <cfenv>
#include <limits>

#include "eigen/qz/driver.hpp"
#include "eigen/qz/stages.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using test::Complex;

aMatrix* value_of(TestHost& host, const Dense& m) {
  return host.matrix(m.rows, m.cols, m.a);
}

// What a driver delivers; the vectors are those of genvecs_driver, the rest must be of both.
struct Found {
  std::string message;
  int count = 0;
  std::vector<Complex> values;
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

// The worst |A x - lambda B x| / (n eps (|A| + |lambda| |B|) |x|) of what was found.
double residual_ratio(const Dense& a, const Dense& b, const Found& found) {
  double worst = 0;
  const int n = a.rows;
  for (int j = 0; j < found.count; ++j) {
    const Complex lambda = found.values[static_cast<std::size_t>(j)];
    double residual = 0;
    double length = 0;
    for (int i = 0; i < n; ++i) {
      Complex sum = 0;
      for (int k = 0; k < n; ++k)
        sum += (a(i, k) - lambda * b(i, k)) *
               Complex(re(found.vectors, k, j), im(found.vectors, k, j));
      residual = std::hypot(residual, std::abs(sum));
      length =
          std::hypot(length, std::abs(Complex(re(found.vectors, i, j), im(found.vectors, i, j))));
    }
    if (residual == 0 && length > 0) continue;
    const double ratio =
        residual / length / (n * 0x1p-52 * (size_of(a) + std::abs(lambda) * size_of(b)));
    if (!(ratio <= worst)) worst = ratio;
  }
  return worst;
}

Dense diagonal(const std::vector<double>& d) {
  const int n = static_cast<int>(d.size());
  return filled(n, n, [&](int i, int j) { return i == j ? d[static_cast<std::size_t>(i)] : 0.0; });
}

Dense changed(const Dense& m, const std::function<double(int, int, double)>& f) {
  return filled(m.rows, m.cols, [&](int i, int j) { return f(i, j, m(i, j)); });
}

struct Pair {
  std::string name;
  Dense a, b;
  int finite;  // How many eigenvalues are to be listed; -1 where rounding decides.
};

// A uniform beam clamped at both ends, in cubic elements: the stiffness and mass matrix of the
// degrees of freedom between the ends.
Dense beam(int n, const double (&element)[4][4]) {
  Dense m(n, n);
  for (int e = 0; 2 * e < n + 2; ++e)
    for (int i = 0; i < 4; ++i)
      for (int j = 0; j < 4; ++j) {
        const int row = 2 * e - 2 + i;
        const int col = 2 * e - 2 + j;
        if (row >= 0 && row < n && col >= 0 && col < n) m(row, col) += element[i][j];
      }
  return m;
}

constexpr double kStiffness[4][4] = {
    {12, 6, -12, 6}, {6, 4, -6, 2}, {-12, -6, 12, -6}, {6, 2, -6, 4}};
constexpr double kMass[4][4] = {{156. / 420, 22. / 420, 54. / 420, -13. / 420},
                                {22. / 420, 4. / 420, 13. / 420, -3. / 420},
                                {54. / 420, 13. / 420, 156. / 420, -22. / 420},
                                {-13. / 420, -3. / 420, -22. / 420, 4. / 420}};

// Pairs of order n >= 2 of every kind that the method has a way of its own for, or trouble with.
std::vector<Pair> pairs(int n, unsigned seed) {
  const Dense a = random_dense(n, n, seed);
  const Dense b = random_dense(n, n, seed + 1);
  const Dense one = identity_dense(n);
  const Dense hessenberg = changed(a, [](int i, int j, double x) { return i > j + 1 ? 0 : x; });
  const Dense triangle = changed(b, [](int i, int j, double x) { return i > j ? 0 : x; });
  const auto half_rank = with_singular_values(n, n, seed, [n](int k) { return k < n / 2 ? 1 : 0; });
  const auto rank_less_one =
      with_singular_values(n, n, seed, [n](int k) { return k + 1 < n ? 1.0 + k : 0; });
  const auto zeros_at = [&](std::initializer_list<int> rows) {
    Dense m = triangle;
    for (const int i : rows) m(i, i) = 0;
    return m;
  };
  const Dense cyclic = filled(n, n, [n](int i, int j) { return i == (j + 1) % n ? 1 : 0; });
  const Dense jordan = filled(n, n, [](int i, int j) { return i == j ? 2 : i + 1 == j ? 1 : 0; });
  const Dense twice = diagonal(std::vector<double>(static_cast<std::size_t>(n), 3));
  const Dense graded_a =
      changed(a, [n](int i, int j, double x) { return x * std::pow(10, -5.0 * (i + j) / n); });
  const Dense graded_b =
      changed(b, [n](int i, int j, double x) { return x * std::pow(10, 5.0 * (i - j) / n); });
  const auto scaled = [](const Dense& m, double factor) {
    return changed(m, [=](int, int, double x) { return x * factor; });
  };
  std::vector<Pair> all = {
      {"random", a, b, n},
      {"B = I", a, one, n},
      {"A = I", one, a, n},
      {"A = B", a, a, n},
      {"diagonal", changed(a, [](int i, int j, double x) { return i == j ? x : 0; }),
       changed(b, [](int i, int j, double x) { return i == j ? x : 0; }), n},
      {"A = 0", Dense(n, n), b, n},
      {"B = 0", a, Dense(n, n), 0},
      {"B of half rank", a, half_rank, -1},
      {"B of rank n - 1", a, rank_less_one, -1},
      {"A of rank n - 1", rank_less_one, b, n},
      {"zero of B first", hessenberg, zeros_at({0}), n - 1},
      {"zero of B last", hessenberg, zeros_at({n - 1}), n - 1},
      {"zero of B in the middle", hessenberg, zeros_at({n / 2}), n - 1},
      {"zeros of B at both ends", hessenberg, zeros_at({0, n - 1}), -1},
      {"zeros of B in a row", hessenberg, zeros_at({n / 2 - 1, n / 2}), -1},
      {"two zeros on a diagonal B", a,
       changed(one,
               [n](int i, int j, double x) { return i == j && (i == 0 || i + 1 == n) ? 0 : x; }),
       n - 2},
      {"cyclic", cyclic, one, n},
      {"Jordan block", jordan, one, n},
      {"hidden Jordan block", product(b, jordan), b, n},
      {"exactly double", product(b, twice), b, n},
      {"skew", difference(a, transposed(a)), one, n},
      {"graded", graded_a, graded_b, -1},
      {"large", scaled(a, 1e9), scaled(b, 1e100), -1},
      {"both large", scaled(a, 1e140), scaled(b, 1e150), n},
      {"large against small", scaled(a, 1e90), scaled(b, 1e-9), n},
      {"stiffness and mass", beam(n, kStiffness), beam(n, kMass), n},
  };
  return all;
}

TEST(QzDriver, ResidualsAreSmall) {
  WorstRatio worst("QZ residual");
  for (const int n : {2, 3, 4, 5, 8, 9, 16, 33, 65}) {
    TestHost host;
    for (const Pair& pair : pairs(n, 11)) {
      const std::string at = pair.name + " n = " + std::to_string(n);
      const Found found = drive(host, pair.a, pair.b);
      EXPECT_EQ(found.message, "") << at;
      if (pair.finite >= 0) {
        EXPECT_EQ(found.count, pair.finite) << at;
      }
      EXPECT_LT(worst.note(residual_ratio(pair.a, pair.b, found), at), 10) << at;
    }
  }
}

// Of a complex pair the first has the positive imaginary part, and the vectors are conjugates.
TEST(QzDriver, PairsStandTogether) {
  TestHost host;
  int complex_pairs = 0;
  for (const Pair& pair : pairs(33, 11)) {
    const Found found = drive(host, pair.a, pair.b);
    for (int j = 0; j < found.count; ++j) {
      if (found.values[static_cast<std::size_t>(j)].imag() == 0) continue;
      ASSERT_LT(j + 1, found.count) << pair.name;
      EXPECT_GT(found.values[static_cast<std::size_t>(j)].imag(), 0) << pair.name;
      EXPECT_LT(found.values[static_cast<std::size_t>(j + 1)].imag(), 0) << pair.name;
      for (int i = 0; i < 33; ++i) {
        EXPECT_EQ(re(found.vectors, i, j), re(found.vectors, i, j + 1));
        EXPECT_EQ(im(found.vectors, i, j), -im(found.vectors, i, j + 1));
      }
      ++j;
      ++complex_pairs;
    }
  }
  EXPECT_GT(complex_pairs, 50);
}

TEST(QzDriver, EveryKernelSetGivesTheSameBits) {
  TestHost host;
  for (const int n : {3, 8, 37, 70}) {
    const Pair pair = pairs(n, 5)[0];
    const Found usual = drive(host, pair.a, pair.b);
    testing::for_each_kernel_set([&] {
      const Found found = drive(host, pair.a, pair.b);
      EXPECT_EQ(found.values, usual.values) << n;
      EXPECT_EQ(elements(found.vectors), elements(usual.vectors)) << n;
    });
  }
}

TEST(QzDriver, ShapesAreCheckedInOrder) {
  TestHost host;
  const auto message = [&](aMatrix* a, aMatrix* b) {
    aMatrix* values = nullptr;
    int count = 0;
    return std::string(genvals_driver(host.context(), a, b, &values, &count));
  };
  EXPECT_EQ(message(host.lean(0, 0), host.lean(2, 3)), "invalid dimension");
  EXPECT_EQ(message(host.lean(2, 3), host.lean(1, 0)), "invalid dimension");
  EXPECT_EQ(message(host.lean(2, 3), host.lean(4, 4)), "must be square");
  EXPECT_EQ(message(host.lean(4, 4), host.lean(3, 2)), "must be square");
  EXPECT_EQ(message(host.lean(4, 4), host.lean(3, 3)), "array size mismatch");
}

std::vector<Complex> values_of(const Dense& a, const Dense& b) {
  TestHost host;
  return drive(host, a, b).values;
}

using Values = std::vector<Complex>;

Values real(std::initializer_list<double> numbers) {
  return Values(numbers.begin(), numbers.end());
}

// By their index on the diagonal: what is finite as alpha / beta, 0 / 0 as 0, the infinite not.
TEST(QzDriver, ListsInTheOrderOfTheDiagonal) {
  EXPECT_EQ(values_of(diagonal({6}), diagonal({-4})), real({-1.5}));
  EXPECT_EQ(values_of(diagonal({0}), diagonal({0})), real({0}));
  EXPECT_EQ(values_of(diagonal({6}), diagonal({0})), Values());
  EXPECT_EQ(values_of(diagonal({5, 3, 0, 4, 0}), diagonal({1, 0, 0, -2, 8})), real({5, 0, -2, 0}));
}

// sqrt(n) eps is still zero, the next number is not.
TEST(QzDriver, SmallAlphaAndBetaCountAsZero) {
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
TEST(QzDriver, TheFirstOfAPairDecidesForBoth) {
  TestHost host;
  const Found found = drive(
      host,
      {2,
       2,
       {3.5848208641483966e-16, 7.86230941047114e-16, -2.98838044775872e-16,
        -4.460237591529929e-16}},
      {2,
       2,
       {-0.02935807897683495, 0.1671487944828112, -0.019581625532336482, -0.19076575746273292}});
  ASSERT_EQ(found.count, 2);
  EXPECT_NE(found.values[0].imag(), 0);
  EXPECT_EQ(found.values[1].imag(), 0);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(re(found.vectors, i, 1), re(found.vectors, i, 0));
    EXPECT_EQ(im(found.vectors, i, 1), -im(found.vectors, i, 0));
  }
  // An infinite pair leaves no imaginary array behind.
  const Dense turning = {3, 3, {0, -1, 0, 1, 0, 0, 0, 0, 0}};
  const Found alone = drive(host, turning, diagonal({1e-17, 1e-17, 0}));
  ASSERT_EQ(alone.values, real({0}));
  EXPECT_EQ(alone.vectors->im, nullptr);
}

// The discriminant of [1 x; -x 1] in its scaled block is -(x / (1 + x))^2.
TEST(QzDriver, TinyDiscriminantMeansADoubleRealEigenvalue) {
  const double bound = std::sqrt(2.0) * 2.220446049250313e-14;
  const auto block = [](double discriminant) {
    const double root = std::sqrt(discriminant);
    const double x = root / (1 - root);
    return Dense(2, 2, {1, -x, x, 1});
  };
  for (const Complex& value : values_of(block(0.999 * bound), identity_dense(2))) {
    EXPECT_EQ(value.imag(), 0);
    EXPECT_NEAR(value.real(), 1, 4e-7);
  }
  const Values pair = values_of(block(1.001 * bound), identity_dense(2));
  EXPECT_NEAR(pair[0].imag(), std::sqrt(bound), 1e-9);
  EXPECT_EQ(pair[1], std::conj(pair[0]));
}

// The tolerance for zeros of B is handed on below its diagonal.
TEST(QzDriver, IterationHandsItsToleranceOn) {
  std::vector<Reflector2> pairs(3);
  std::vector<Reflector3> triples(3);
  for (const auto& [b, norm] : {std::pair{diagonal({3, -2, 1}), 3.0}, {Dense(3, 3), 1.0}}) {
    Dense a = identity_dense(3);
    Dense reduced = b;
    ASSERT_EQ(qz_iterate({3, a.a.data(), reduced.a.data(), nullptr}, pairs.data(), triples.data()),
              nullptr);
    EXPECT_EQ(reduced(2, 0), norm * 0x1p-52);
  }
  double a = 5;
  double b = 7;
  ASSERT_EQ(qz_iterate({1, &a, &b, nullptr}, pairs.data(), triples.data()), nullptr);
  EXPECT_EQ(b, 7);
}

// Where nothing traps, numbers that never compare small end after the steps of one block.
TEST(QzDriver, NotANumberEnds) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const int n : {3, 9}) {
    const Dense one = random_dense(n, n, 3);
    for (const double bad : {nan, infinity}) {
      for (const bool in_a : {true, false}) {
        Dense a = random_dense(n, n, 1);
        Dense b = random_dense(n, n, 2);
        (in_a ? a : b)(n / 2, n / 2) = bad;
        std::vector<Reflector2> pairs(static_cast<std::size_t>(2 * n));
        std::vector<Reflector3> triples(pairs.size());
        const QzPair pair = {n, a.a.data(), b.a.data(), nullptr};
        qz_reduce(pair, pairs.data());
        const char* message = qz_iterate(pair, pairs.data(), triples.data());
        EXPECT_STREQ(message, "too many iterations") << n << " " << bad << in_a;
      }
    }
  }
}

}  // namespace
}  // namespace matrix_pack
