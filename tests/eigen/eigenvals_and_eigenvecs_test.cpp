// eigenvals and eigenvecs: residuals, known spectra, exact facts, messages and limits.
#include <cfenv>
#include <cmath>
#include <limits>

#include "eigen/complex/qr_iteration.hpp"
#include "eigen/cores.hpp"
#include "pack/exports.hpp"
#include "tests/support/eigen_zoo.hpp"
#include "tests/support/sanitized.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using Eigen = InHost;

const double kPi = std::acos(-1.0);

constexpr int kOrders[] = {1, 2, 3, 5, 8, 9, 33, 66, 130};

Anyval* values_of(TestHost& host, aMatrix* m, double tolerance = 0) {
  return eigenvals(host.context(), m, host.scalar(tolerance));
}

std::vector<StdComplex> values_of(const Specimen& a) {
  TestHost host;
  return elements(as_result_matrix(values_of(host, make(host, a))));
}

// --- Residuals ---

// Close to a defective one, a large matrix leaves too few digits. Of very large ones, one will do.
std::vector<Specimen> problems(int n, bool complex) {
  std::vector<Specimen> all = structures(n, n, 22, complex);
  std::erase_if(all, [n](const Specimen& a) {
    return (n > 10 && a.name.find("cyclic") != std::string::npos) ||
           (n > 100 && !a.name.ends_with("random  130x130"));
  });
  return all;
}

// The values of `eigenvals` with the vectors of `eigenvecs`: a small residual says that both are
// right and in the same order.
void check_residual(const Specimen& a, WorstRatio& worst) {
  TestHost host;
  aMatrix* const m = make(host, a);
  const std::vector<StdComplex> values = elements(as_result_matrix(values_of(host, m)));
  const aMatrix* const vectors = as_result_matrix(eigenvecs(host.context(), m));
  ASSERT_EQ(values.size(), std::size_t(m->rows)) << a.name;
  ASSERT_EQ(vectors->cols, m->rows) << a.name;
  worst.expect(eigen_ratio(m, nullptr, values, vectors), a.name);
  const std::vector<StdComplex> x = elements(vectors);
  for (auto first = x.begin(); first != x.end(); first += m->rows)
    EXPECT_NEAR(norm_of({first, first + m->rows}), 1, 1e-14) << a.name;
}

TEST_F(Eigen, ResidualsAreSmallOverTheZoo) {
  WorstRatio symmetric("symmetric eigen residual", 8), general("general eigen residual", 10),
      complex("complex eigen residual", 10), orthogonality("symmetric V'V - I", 20);
  for (const int n : kOrders) {
    if (kSanitized && n > 100) continue;
    for (const Specimen& a : problems(n, true)) check_residual(a, complex);
    for (const Specimen& a : problems(n, false)) {
      check_residual(a, general);
      const Specimen s = {a.name + " mirrored", mirrored(a.matrix)};
      check_residual(s, symmetric);
      TestHost host;
      aMatrix* const v = make(host, s);
      ASSERT_EQ(symmetric_eigenvectors(v), nullptr);
      EXPECT_EQ(v->im, nullptr);
      orthogonality.expect(orthogonality_ratio({n, n, re_parts(v)}), s.name);
    }
  }
  // Real eigenvalues, many found two at a time, while columns wait for the sweeps before.
  Dense similar = mirrored(random_dense(110, 110, 23));
  for (int j = 0; j < 110; ++j)
    for (int i = 0; i < 110; ++i) similar(i, j) *= (1 + i % 4) / (1.0 + j % 4);
  if (!kSanitized) check_residual({"similar to a symmetric one", similar}, general);
}

// The two cores of a kind share what is the same: the values are equal to the bit. Of a real
// matrix, values and vectors of a pair are conjugates to the bit, and the positive imaginary part
// comes first; before the host scales them, the first of the largest components of each vector is
// exactly 1.
void check_cores(const Specimen& a) {
  SCOPED_TRACE(a.name);
  const int n = a.matrix.rows;
  const bool is_real = a.is_real();
  TestHost host;
  EfiCallContext* const context = host.context();
  aMatrix *values = nullptr, *others = nullptr, *vectors = nullptr;
  ASSERT_EQ(is_real ? general_eigenvalues(context, make(host, a), &values)
                    : complex_eigenvalues(context, make(host, a), 0, &values),
            nullptr);
  const auto core = is_real ? general_eigenvectors : complex_eigenvectors;
  ASSERT_EQ(core(context, make(host, a), &others, &vectors), nullptr);
  EXPECT_TRUE(elements(values) == elements(others));
  for (int j = 0; j < n; ++j) {
    double largest = 0;
    int ones = 0, conjugates = 0;
    for (int i = 0; i < n; ++i) {
      const StdComplex x(re(vectors, i, j), im(vectors, i, j));
      largest = std::max(largest, std::abs(x));
      ones += x == 1.0;
      if (j + 1 < n)
        conjugates += re(vectors, i, j + 1) == x.real() && im(vectors, i, j + 1) == -x.imag();
    }
    EXPECT_LE(largest, 1 + 1e-15) << j;
    EXPECT_GE(ones, 1) << j;
    if (!is_real || !(im(values, j, 0) > 0)) continue;
    EXPECT_EQ(conjugates, n) << j;
    EXPECT_EQ(re(values, j + 1, 0), re(values, j, 0));
    EXPECT_EQ(im(values, j + 1, 0), -im(values, j, 0));
  }
}

TEST_F(Eigen, BothCoresAgreeAndLargestComponentsAreOne) {
  // Real symmetric matrices have a core of their own.
  for (const int n : kOrders) {
    if (kSanitized && n > 100) continue;
    for (const bool complex : {false, true})
      for (const Specimen& a : problems(n, complex))
        if (complex || mirrored(a.matrix).a != a.matrix.a) check_cores(a);
  }
  // At this order, blocks that had split off used to be joined again.
  if (!kSanitized) check_cores({"random", random_dense(500, 500, 500)});
}

// Ones on and above the diagonal, and below them a block with the eigenvalues 1 +- distance i: each
// row above multiplies the component by 1 / distance, beyond the range of a double.
TEST_F(Eigen, ComponentsThatGrowAreScaled) {
  constexpr int n = 46;
  constexpr double distance = 1e-8;
  Dense growing = filled(n, n, tridiagonal(0, 1, 1));
  growing(n - 2, n - 1) = distance;
  growing(n - 1, n - 2) = -distance;
  aMatrix* const a = host.matrix(n, n, growing.a);
  const std::vector<StdComplex> v = elements(as_result_matrix(eigenvecs(c, a)));
  for (const int column : {n - 2, n - 1}) {
    const auto first = v.begin() + column * n;
    aMatrix* const x = host.complex_matrix(n, 1, {first, first + n});
    EXPECT_NEAR(norm_of(elements(x)), 1, 1e-6);
    EXPECT_LT(std::min(eigen_ratio(a, nullptr, {{1, distance}}, x),
                       eigen_ratio(a, nullptr, {{1, -distance}}, x)),
              1);
  }
}

// The negative of a matrix has the negative eigenvalues, to the bit, where no zeros have signs and
// no exceptional shift is needed: what is decided by magnitudes is decided alike. Of a real pair,
// the other one comes first then.
TEST_F(Eigen, SignsMakeNoDifference) {
  for (const int n : {2, 3, 4, 5, 8})
    for (unsigned seed = 0; seed < 20; ++seed)
      for (const bool complex : {false, true}) {
        Specimen a = specimen({Source::units, Structure::general}, n, n, seed, complex);
        std::vector<StdComplex> expected = values_of(a);
        for (StdComplex& value : expected) value = complex ? -value : -std::conj(value);
        for (Dense* part : {&a.matrix, &a.imaginary})
          *part = changed(*part, [](int, int, double x) { return -x; });
        EXPECT_EQ(values_of(a), expected) << a.name << " " << seed;
      }
}

// --- Known spectra ---

std::vector<StdComplex> sequence(int n, const std::function<StdComplex(int)>& value) {
  std::vector<StdComplex> all;
  for (int k = 0; k < n; ++k) all.push_back(value(k));
  return all;
}

TEST_F(Eigen, SpectraAreTheKnownOnes) {
  WorstRatio worst("eigenvalues against known values", 17);
  const auto check = [&](const char* name, const Dense& a,
                         const std::function<StdComplex(int)>& known) {
    for (const bool complex : {false, true})
      worst.expect(distance(values_of({name, a, complex ? Dense(a.rows, a.rows) : Dense(0, 0)}),
                            sequence(a.rows, known)) /
                       (a.rows * 0x1p-52),
                   name);
  };
  const auto of = [](Structure structure, int n) {
    return specimen({Source::units, structure}, n, n, 1).matrix;
  };
  for (const int n : {2, 3, 8, 10, 33, 100}) {
    check("second difference", filled(n, n, tridiagonal(-1, 2, -1)),
          [n](int k) { return 2 - 2 * std::cos((k + 1) * kPi / (n + 1)); });
    check("circulant", of(Structure::circulant, n), [n](int k) {
      StdComplex sum = 0;
      for (int j = 0; j < n; ++j) sum += std::polar(1.0 / (1 + j), 2 * kPi * j * k / n);
      return sum;
    });
    // Without exceptional shifts the iteration would stand still on these.
    check("cyclic", filled(n, n, [n](int i, int j) { return i == (j + 1) % n; }),
          [n](int k) { return std::polar(1.0, 2 * kPi * k / n); });
  }
  for (const int n : {2, 5, 10})
    EXPECT_LT(distance(values_of({"Clement", of(Structure::clement, n)}),
                       sequence(n, [n](int k) { return n - 1 - 2 * k; })),
              1e-13 * n);
  // A Hadamard matrix of order 8 is symmetric, its square 8 I, its trace 0.
  check("Hadamard",
        filled(8, 8, [](int i, int j) { return __builtin_parity(unsigned(i & j)) ? -1 : 1; }),
        [](int k) { return k % 2 ? std::sqrt(8) : -std::sqrt(8); });
  // Similar to a nilpotent matrix of order 4: the values may be off by the fourth root of eps.
  const Dense nilpotent(4, 4, {2, 4, 0, 0, -1, -2, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0});
  EXPECT_LT(distance(values_of({"nilpotent", nilpotent}), sequence(4, [](int) { return 0; })),
            1e-3);
}

// --- Exact facts ---

TEST_F(Eigen, SmallMatricesGiveExactValues) {
  expect_matrix(values_of(host, host.matrix({{3}})), {{3}});
  expect_matrix(values_of(host, host.matrix({{2, 0, 0}, {0, -1, 0}, {0, 0, 5}})), {{2}, {-1}, {5}});
  // Both arrays are kept, though no imaginary part is nonzero.
  expect_complex_matrix(values_of(host, host.matrix({{1, 2, 3}, {0, 4, 5}, {0, 0, 6}})),
                        {{1}, {4}, {6}});
  // TOL is nothing to real matrices.
  for (const double tolerance : {0, 10})
    expect_complex_matrix(values_of(host, host.matrix({{0, -1}, {1, 0}}), tolerance),
                          {{{0, 1}}, {{0, -1}}});
  expect_complex_matrix(values_of(host, host.imaginary({{2, 0}, {0, 3}})), {{{0, 2}}, {{0, 3}}});
  // Nor to isolated values of complex ones: all but the last that is left.
  expect_complex_matrix(values_of(host, host.complex_matrix({{{1, 2}, 1}, {0, {4, 0.5}}}), 10),
                        {{0}, {{4, 0.5}}});
  expect_complex_matrix(values_of(host, host.complex_matrix({{{1, 1}, 1}, {1, {1, 1}}}), 10),
                        {{0}, {0}});
  for (const int n : {2, 3, 4, 9}) {
    const Dense upper = filled(n, n, [](int i, int j) { return i <= j ? 1 + i + 0.1 * j : 0; });
    const auto diagonal = sequence(n, [&](int k) { return upper(k, k); });
    EXPECT_EQ(values_of({"upper", upper}), diagonal);
    EXPECT_EQ(values_of({"upper", upper, Dense(n, n)}), diagonal);
    EXPECT_EQ(distance(values_of({"lower", transposed(upper)}), diagonal), 0);
  }
}

TEST_F(Eigen, SmallMatricesGiveExactVectors) {
  const auto vectors = [&](aMatrix* m) { return eigenvecs(c, m); };
  expect_matrix(vectors(host.matrix({{-7}})), {{1}});
  expect_matrix(vectors(host.matrix({{3, 0}, {0, -2}})), {{1, 0}, {0, 1}});
  expect_complex_matrix(vectors(host.complex_matrix({{{5, 1}}})), {{1}});
  expect_complex_matrix(vectors(host.matrix({{1, 0}, {0.75, 2}})), {{0, 0.8}, {1, -0.6}});
  // Divisors that are zero, in matrices that are next to nothing or nothing.
  expect_complex_matrix(vectors(host.complex_matrix({{0, 0}, {0, 0}})), {{1, 0}, {0, 1}});
  const auto defective = elements(
      as_result_matrix(vectors(host.complex_matrix({{{0, 1e-310}, 1e-309}, {0, {0, 1e-310}}}))));
  EXPECT_EQ(defective[0], StdComplex(1));
  EXPECT_NEAR(std::abs(defective[2]), 1, 1e-10) << "but for a tiny one, the same vector again";
}

// Parts smaller than TOL become 0, equal ones stay; only in the values of complex matrices, and
// only in those that the iteration finds.
TEST_F(Eigen, ToleranceChopsStrictly) {
  aMatrix* const one = host.complex_matrix({{{0.5, -0.25}}});
  expect_complex_matrix(values_of(host, one, 0.25), {{{0.5, -0.25}}});
  expect_complex_matrix(values_of(host, one, 0.5), {{{0.5, 0}}});
  expect_complex_matrix(values_of(host, one, 1), {{0}});
  expect_complex_matrix(eigenvecs(c, one), {{1}});
  aMatrix* const dense = make(host, structures(6, 6, 1, true)[0]);
  for (const StdComplex& z : elements(as_result_matrix(values_of(host, dense, 1e9))))
    EXPECT_EQ(z, StdComplex(0));
  expect_complex_matrix(values_of(host, host.complex_matrix({{{1, 1}, 1}, {0, {2, 2}}}), 10),
                        {{0}, {{2, 2}}});
}

// --- Messages and limits ---

TEST_F(Eigen, Messages) {
  const auto expect_both = [&](auto* m, const char* message, int arg) {
    expect_error(eigenvals(c, m, host.scalar(0)), message, 0, arg);
    expect_error(eigenvecs(c, m), message, 0, arg);
  };
  expect_both(static_cast<Anyval*>(host.scalar(1)), "must be array", 0);
  expect_both(host.matrix({{1, 2, 3}, {4, 5, 6}}), "must be square", 1);
  expect_both(host.matrix(0, 0, {}), "invalid dimension", 0);
  expect_both(host.complex_matrix(0, 0, {}), "invalid dimension", 0);
  expect_both(host.lean(2, 2), "Null matrix or vector pointer.", 0);
  // A failed copy: `eigenvals` leaves it to the core, `eigenvecs` passes on what the copy says.
  for (aMatrix* m : {host.matrix({{1}}), host.matrix({{1, 2}, {3, 4}}), host.imaginary({{1}})}) {
    const auto fail_first = [&](auto call) {
      const AllocationFaults faults(1);
      return call();
    };
    expect_error(fail_first([&] { return eigenvals(c, m, 0.0); }), "Null matrix or vector pointer.",
                 0, 0);
    expect_error(fail_first([&] { return eigenvecs(c, m); }), "out of memory", 0, 0);
  }
}

// Unguarded, a NaN never settles: every core runs into its limit.
TEST_F(Eigen, CoresGiveUpAtTheirLimits) {
  aMatrix *values = nullptr, *vectors = nullptr;
  const auto symmetric = [&] { return host.matrix({{1, kNan}, {kNan, 2}}); };
  const auto general = [&] { return host.matrix({{1, kNan, 3}, {4, 5, 6}, {7, 8, kNan}}); };
  const auto complex = [&] { return host.complex_matrix({{{1, 1}, kNan}, {{2, 3}, 4}}); };
  for (const char* message :
       {symmetric_eigenvalues(c, symmetric(), &values), symmetric_eigenvectors(symmetric()),
        general_eigenvalues(c, general(), &values),
        general_eigenvectors(c, general(), &values, &vectors),
        complex_eigenvalues(c, complex(), 0, &values),
        complex_eigenvectors(c, complex(), &values, &vectors)})
    EXPECT_STREQ(message, "too many iterations");
}

// Where rounding goes down, a finite number doubled again and again never reaches infinity:
// balancing ends all the same.
TEST_F(Eigen, BalancingEndsWhereRoundingGoesDown) {
  const double inf = std::numeric_limits<double>::infinity();
  aMatrix* a = host.complex_matrix({{{1, -inf}, 2, 3}, {{4, -inf}, 5, 6}, {7, 8, 9}});
  std::fesetround(FE_DOWNWARD);
  Anyval* vectors = eigenvecs(c, a);
  std::fesetround(FE_TONEAREST);
  expect_error(vectors, "too many iterations", 0, 0);
}

// One sweep more than the limit is one too many; the values may take 31, the vectors 30. What
// splits off is zero from then on.
TEST_F(Eigen, ComplexIterationCountsItsSweepsAndClearsTheSubdiagonal) {
  const int n = 12;
  const Dense x = random_dense(n, n, 23), y = random_dense(n, n, 24);
  const auto hessenberg = [&](const Dense& m) {
    return filled(n, n, [&](int i, int j) { return i > j + 1 ? 0 : m(i, j); });
  };
  const Balance whole = {n, 0, n - 1, n, nullptr};
  double wr[n], wi[n];
  const auto run = [&](int most) {
    Dense re = hessenberg(x), im = hessenberg(y), z_re = identity_dense(n), z_im(n, n);
    const char* const message = complex_qr_with_vectors(whole, {re.a.data(), im.a.data(), n}, most,
                                                        wr, wi, {z_re.a.data(), z_im.a.data(), n});
    for (int i = 1; i < n && message == nullptr; ++i) EXPECT_EQ(re(i, i - 1), 0.0) << i;
    Dense h_re = hessenberg(x), h_im = hessenberg(y);
    EXPECT_STREQ(complex_qr(whole, {h_re.a.data(), h_im.a.data(), n}, 0, most, wr, wi), message);
    return message;
  };
  int needed = 1;
  while (run(needed) != nullptr) ++needed;
  EXPECT_GE(needed, 2);
  EXPECT_LE(needed, 10);
  EXPECT_STREQ(run(needed - 1), "too many iterations");
  EXPECT_EQ(kMostSweepsForValues, 31);
  EXPECT_EQ(kMostSweepsForVectors, 30);
}

}  // namespace
}  // namespace matrix_pack
