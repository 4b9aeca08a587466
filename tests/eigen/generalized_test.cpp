// genvals and genvecs: checks, orders, orientation, filter and results.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "eigen/eigen.hpp"
#include "pack/exports.hpp"
#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;

using Handler = Anyval* (*)(EfiCallContext*, Anyval*, Anyval*, Anyval*);

constexpr double kTolerance = 1e-9;

struct Solver {
  TestHost host;
  Anyval* tolerance = host.scalar(kTolerance);

  Anyval* values(Anyval* m, Anyval* n) { return genvals(host.context(), m, n, tolerance); }
  Anyval* vectors(Anyval* m, Anyval* n) { return genvecs(host.context(), m, n, tolerance); }
  aMatrix* value_of(const Dense& m) { return host.matrix(m.rows, m.cols, m.a); }
};

// Each refusal of both functions, the earlier check in the order of checks first.
TEST(Generalized, RefusesInTheOrderOfItsChecks) {
  TestHost host;
  Anyval* const one = host.scalar(1);
  aMatrix* const square = host.matrix({{1, 2}, {3, 4}});
  aMatrix* const larger = host.matrix({{1, 2, 3}, {4, 5, 6}, {7, 8, 10}});
  aMatrix* const wide = host.matrix({{1, 2, 3}, {4, 5, 6}});
  aMatrix* const complex = host.complex_matrix({{{1, 1}, 2, 3}});
  aMatrix* const nested = host.nested(2, 2, {one, one, one, one});
  aMatrix* const small = host.matrix({{0}});
  Anyval* const text = host.string("TOL");
  Anyval* const bad = host.scalar(0);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    Anyval *m, *n, *tolerance;
    const char* message;
    int arg;
  } cases[] = {
      {one, one, text, "must be array", 1},
      {complex, text, text, "must be array", 2},
      {complex, complex, text, "illegal TOL", 0},
      {complex, complex, square, "illegal TOL", 0},
      {complex, complex, bad, "must be real", 1},
      {wide, complex, bad, "must be real", 2},
      {wide, wide, bad, "must be square", 1},
      {larger, wide, bad, "must be square", 2},
      {larger, nested, bad, "incompatible dimensions", 0},
      {nested, nested, bad, "may not be nested", 1},
      {square, nested, bad, "may not be nested", 2},
      {square, square, bad, "illegal TOL", 0},
      {square, square, host.scalar(-0.5), "illegal TOL", 0},
      {square, square, host.scalar(std::nextafter(1, 2)), "illegal TOL", 0},
      {square, square, host.scalar(nan), "illegal TOL", 0},
      {square, square, host.scalar(0.5, 1e-300), "illegal TOL", 0},
      {small, small, bad, "illegal TOL", 0},
      {small, small, host.scalar(2), "illegal TOL", 0},
      {small, small, host.scalar(0.5, 1), "illegal TOL", 0},
  };
  for (const Handler handler : {genvals, genvecs})
    for (const auto& c : cases) {
      SCOPED_TRACE(c.message);
      expect_error(handler(host.context(), c.m, c.n, c.tolerance), c.message, 0, c.arg);
    }
}

TEST(Generalized, AcceptsTolUpToOne) {
  TestHost host;
  for (const double t : {1.0, 5e-324}) {
    const auto call = [&](Rows m, Rows n) {
      return genvals(host.context(), host.matrix(m), host.matrix(n), host.scalar(t));
    };
    expect_matrix(call({{3}}, {{2}}), {{1.5}});
    expect_complex_matrix(call({{3, 0}, {0, 1}}, {{1, 0}, {0, 2}}), {{3}, {0.5}});
  }
}

TEST(Generalized, OrderOneIsATable) {
  Solver s;
  const auto m = [&](double x) { return s.host.matrix({{x}}); };
  expect_matrix(s.values(m(3), m(-2)), {{-1.5}});
  expect_matrix(s.vectors(m(3), m(-2)), {{1}});
  // There is an eigenvalue but no vector: the two functions differ.
  expect_matrix(s.values(m(0), m(2)), {{0}});
  expect_error(s.vectors(m(0), m(2)), "no solution found", 0, 0);
  for (const Handler handler : {genvals, genvecs}) {
    const auto call = [&](Anyval* a, Anyval* b) {
      return handler(s.host.context(), a, b, s.tolerance);
    };
    expect_error(call(m(3), m(0)), "no solution found", 0, 0);
    expect_error(call(m(0), m(0)), "singularity", 0, 0);
    expect_error(call(s.host.lean(1, 1), s.host.lean(1, 1)), "singularity", 0, 0);
  }
  // The guard speaks.
  expect_error(s.values(m(1e300), m(1e-300)), "overflow", 0, 0);
}

// An N that is singular, with a regular M, exchanges their roles: mu is kept above TOL, strictly,
// and by its real part alone.
TEST(Generalized, ExchangesTheRolesForASingularN) {
  TestHost host;
  aMatrix* const m = host.matrix({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  const auto call = [&](Handler handler, aMatrix* n, double tolerance) {
    return handler(host.context(), m, n, host.scalar(tolerance));
  };
  aMatrix* const n = host.matrix({{2, 0, 0}, {0, -0.5, 0}, {0, 0, 0}});
  expect_complex_matrix(call(genvals, n, 0.25), {{0.5}, {-2}});
  expect_complex_matrix(call(genvals, n, 0.5), {{0.5}});
  EXPECT_EQ(as_result_matrix(call(genvecs, n, 0.25))->cols, 2);
  EXPECT_EQ(as_result_matrix(call(genvecs, n, 0.5))->cols, 1);
  aMatrix* const turning = host.matrix({{0, -5, 0}, {5, 0, 0}, {0, 0, 0}});
  aMatrix* const spiral = host.matrix({{1, -2, 0}, {2, 1, 0}, {0, 0, 0}});
  for (const Handler handler : {genvals, genvecs}) {
    expect_error(call(handler, host.matrix({{1, 0, 0}, {0, -0.5, 0}, {0, 0, 0}}), 1),
                 "no solution found", 0, 0);
    expect_error(call(handler, host.lean(3, 3), 0.25), "no solution found", 0, 0);
    expect_error(call(handler, turning, 0.25), "no solution found", 0, 0);
  }
  // The order is that of mu = 1 + 2i, 1 - 2i.
  const std::vector<Complex> lambda = elements(as_result_matrix(call(genvals, spiral, 0.25)));
  ASSERT_EQ(lambda.size(), 2u);
  EXPECT_LT(std::abs(lambda[0] - Complex(0.2, -0.4)), 1e-15);
  EXPECT_LT(std::abs(lambda[1] - Complex(0.2, 0.4)), 1e-15);
}

// In every other case the problem is solved as it stands, and TOL drops nothing.
TEST(Generalized, SolvesTheProblemAsItStandsOtherwise) {
  TestHost host;
  const auto call = [&](Handler handler, aMatrix* m, aMatrix* n) {
    return handler(host.context(), m, n, host.scalar(1));
  };
  aMatrix* const n = host.matrix({{1, 0}, {0, 0x1p-40}});
  expect_complex_matrix(call(genvals, host.matrix({{0.5, 0}, {0, 1}}), n), {{0.5}, {0x1p40}});
  // Both singular: 0/1, 1/0 and 0/0.
  aMatrix* const a = host.matrix({{0, 0, 0}, {0, 1, 0}, {0, 0, 0}});
  aMatrix* const b = host.matrix({{1, 0, 0}, {0, 0, 0}, {0, 0, 0}});
  expect_complex_matrix(call(genvals, a, b), {{0}, {0}});
  expect_complex_matrix(call(genvals, host.lean(2, 2), n), {{0}, {0}});
  // Singular by their singular values, yet no alpha counts as zero: all infinite.
  aMatrix* const nearly = host.matrix({{1, 0}, {0, 4e-16}});
  for (const Handler handler : {genvals, genvecs})
    expect_error(call(handler, nearly, host.lean(2, 2)), "no solution found", 0, 0);
}

// The eigenvalues have both part arrays; the vectors solved for directly an imaginary one only when
// it holds something, those of an exchanged problem always.
TEST(Generalized, PartArraysOfTheResults) {
  Solver s;
  aMatrix* const m = s.host.matrix({{2, 1}, {1, 3}});
  aMatrix* const regular = s.host.matrix({{2, 0}, {0, 1}});
  aMatrix* const singular = s.host.matrix({{1, 0}, {0, 0}});
  aMatrix* const turning = s.host.matrix({{0, -1}, {1, 0}});
  for (aMatrix* n : {regular, singular}) {
    const aMatrix* values = as_result_matrix(s.values(m, n));
    EXPECT_TRUE(values->re != nullptr && values->im != nullptr);
    for (const double x : im_parts(values)) EXPECT_FALSE(x != 0 || std::signbit(x));
  }
  EXPECT_EQ(as_result_matrix(s.vectors(m, regular))->im, nullptr);
  EXPECT_NE(as_result_matrix(s.vectors(turning, regular))->im, nullptr);
  EXPECT_NE(as_result_matrix(s.vectors(m, singular))->im, nullptr);
}

double residual_ratio(const Dense& m, const Dense& n, const aMatrix* values,
                      const aMatrix* vectors) {
  double worst = 0;
  for (int j = 0; j < values->rows; ++j) {
    const Complex lambda(re(values, j, 0), im(values, j, 0));
    double residual = 0;
    double length = 0;
    for (int i = 0; i < m.rows; ++i) {
      Complex sum = 0;
      for (int k = 0; k < m.rows; ++k)
        sum += (m(i, k) - lambda * n(i, k)) * Complex(re(vectors, k, j), im(vectors, k, j));
      residual = std::hypot(residual, std::abs(sum));
      length = std::hypot(length, std::abs(Complex(re(vectors, i, j), im(vectors, i, j))));
    }
    EXPECT_NEAR(length, 1, 1e-14) << "columns have unit length";
    const double ratio =
        residual / (m.rows * 0x1p-52 * (size_of(m) + std::abs(lambda) * size_of(n)));
    if (!(ratio <= worst)) worst = ratio;
  }
  return worst;
}

// Values and vectors belong together in both orientations, and the arguments stay as they are.
TEST(Generalized, ColumnsBelongToTheValues) {
  WorstRatio worst("generalized eigenproblem residual");
  for (const int order : {2, 3, 5, 8, 9, 33}) {
    const Dense a = random_dense(order, order, 21);
    const Dense b = random_dense(order, order, 22);
    const Dense singular = filled(order, order, [&](int i, int j) {
      return j + 1 < order ? b(i, j) : order > 2 ? b(i, 0) : 0.0;
    });
    const std::pair<const char*, std::pair<Dense, Dense>> problems[] = {
        {"both regular", {a, b}}, {"N singular", {a, singular}}, {"M singular", {singular, a}}};
    for (const auto& [name, pair] : problems) {
      const std::string at = std::string(name) + " n = " + std::to_string(order);
      Solver s;
      aMatrix* m = s.value_of(pair.first);
      aMatrix* n = s.value_of(pair.second);
      const Snapshot m_before(m);
      const Snapshot n_before(n);
      const aMatrix* values = as_result_matrix(s.values(m, n));
      const aMatrix* vectors = as_result_matrix(s.vectors(m, n));
      EXPECT_TRUE(m_before.unchanged() && n_before.unchanged()) << at;
      const bool drops = std::string(name) == "N singular";
      ASSERT_EQ(values->rows, drops ? order - 1 : order) << at;
      ASSERT_EQ(vectors->cols, values->rows) << at;
      // What stays of a zero mu is dropped; the largest lambda spoils the smaller.
      EXPECT_LT(worst.note(residual_ratio(pair.first, pair.second, values, vectors), at), 10) << at;
    }
  }
}

// With Q and Z orthogonal, Q D Z and Q Z have the eigenvalues D.
TEST(Generalized, FindsKnownEigenvalues) {
  for (const int order : {2, 5, 9, 20}) {
    const auto orthogonal = [&](unsigned seed) {
      return with_singular_values(order, order, seed, [](int) { return 1; });
    };
    const Dense q = orthogonal(31);
    const Dense z = orthogonal(57);
    const Dense d = filled(order, order, [](int i, int j) { return i == j ? i - 2.5 : 0.0; });
    Solver s;
    const aMatrix* values = as_result_matrix(
        s.values(s.value_of(product(product(q, d), z)), s.value_of(product(q, z))));
    std::vector<double> found = re_parts(values);
    std::sort(found.begin(), found.end());
    ASSERT_EQ(found.size(), static_cast<std::size_t>(order));
    for (int i = 0; i < order; ++i)
      EXPECT_NEAR(found[static_cast<std::size_t>(i)], i - 2.5, 20 * order * 0x1p-52);
    for (const double x : im_parts(values)) EXPECT_EQ(x, 0);
  }
}

// The distance of two lists of eigenvalues: each is matched with the nearest one left.
double distance(const std::vector<Complex>& a, std::vector<Complex> b) {
  double worst = 0;
  for (const Complex& x : a) {
    const auto nearest = std::min_element(
        b.begin(), b.end(),
        [&](const Complex& p, const Complex& q) { return std::abs(p - x) < std::abs(q - x); });
    worst = std::max(worst, std::abs(*nearest - x));
    b.erase(nearest);
  }
  return worst;
}

TEST(Generalized, WithTheIdentityFindsWhatEigenvalsFinds) {
  WorstRatio worst("genvals(M, I) against eigenvals(M)");
  for (const int order : {2, 3, 5, 9, 33, 60}) {
    Solver s;
    const Dense a = random_dense(order, order, 51);
    const Dense turned = filled(order, order, [&](int i, int j) { return a(i, j) + a(j, i); });
    for (const auto& [name, m] : {std::pair{"random", a}, {"symmetric", turned}}) {
      const std::string at = std::string(name) + " n = " + std::to_string(order);
      Anyval* expected = eigenvals(s.host.context(), s.value_of(m), s.tolerance);
      Anyval* found = s.values(s.value_of(m), s.value_of(identity_dense(order)));
      const double ratio =
          distance(elements(as_result_matrix(found)), elements(as_result_matrix(expected))) /
          (order * 0x1p-52 * size_of(m));
      EXPECT_LT(worst.note(ratio, at), 10) << at;
    }
  }
}

// A documented message, in bounded time.
TEST(Generalized, NotANumberAndInfinityAreReported) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const int order : {2, 3, 12})
    for (const double bad : {nan, infinity, -infinity})
      for (const bool in_m : {true, false}) {
        Solver s;
        Dense m = random_dense(order, order, 41);
        Dense n = random_dense(order, order, 42);
        (in_m ? m : n)(order / 2, 0) = bad;
        for (const Handler handler : {genvals, genvecs}) {
          const std::string said =
              describe(handler(s.host.context(), s.value_of(m), s.value_of(n), s.tolerance));
          EXPECT_TRUE(said == "error \"floating point error\" mark 0 argument 0" ||
                      said == "error \"overflow\" mark 0 argument 0")
              << said;
        }
      }
}

// Also in an exchanged problem with a complex pair: the ready-made value or the message.
TEST(Generalized, EveryAllocationMayFail) {
  Solver s;
  aMatrix* const m = s.host.matrix({{3, 1, 0}, {1, 3, 1}, {0, 1, 3}});
  aMatrix* const n = s.host.matrix({{1, -2, 0}, {2, 1, 0}, {0, 0, 0}});
  for (const Handler handler : {genvals, genvecs}) {
    int ready_made = 0;
    Anyval* usual =
        with_failing_allocations([&] { return handler(s.host.context(), m, n, s.tolerance); },
                                 [&](Anyval* value, int nth) {
                                   if (value == sError_OutOfMemory)
                                     ++ready_made;
                                   else
                                     expect_error(value, "out of memory", 0, 0);
                                   EXPECT_LT(nth, 100);
                                 });
    EXPECT_EQ(as_result_matrix(usual)->im == nullptr, false);
    EXPECT_GE(ready_made, 2);
  }
}

}  // namespace
}  // namespace matrix_pack
