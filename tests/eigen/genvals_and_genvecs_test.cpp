// genvals and genvecs: checks, orders, orientation, filter and results.
#include <cmath>

#include "eigen/eigen.hpp"
#include "pack/exports.hpp"
#include "tests/support/eigen_zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using Generalized = InHost;

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
TEST_F(Generalized, RefusesInTheOrderOfItsChecks) {
  Anyval* const one = host.scalar(1);
  aMatrix* const square = host.matrix({{1, 2}, {3, 4}});
  aMatrix* const larger = host.matrix({{1, 2, 3}, {4, 5, 6}, {7, 8, 10}});
  aMatrix* const wide = host.matrix({{1, 2, 3}, {4, 5, 6}});
  aMatrix* const complex = host.complex_matrix({{{1, 1}, 2, 3}});
  aMatrix* const nested = host.nested(2, 2, {one, one, one, one});
  aMatrix* const small = host.matrix({{0}});
  Anyval* const text = host.string("TOL");
  Anyval* const bad = host.scalar(0);
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
      {square, square, host.scalar(kNan), "illegal TOL", 0},
      {square, square, host.scalar(0.5, 1e-300), "illegal TOL", 0},
      {small, small, bad, "illegal TOL", 0},
      {small, small, host.scalar(2), "illegal TOL", 0},
      {small, small, host.scalar(0.5, 1), "illegal TOL", 0},
  };
  for (const Handler handler : {genvals, genvecs})
    for (const auto& [m, n, tolerance, message, arg] : cases)
      expect_error(handler(c, m, n, tolerance), message, 0, arg);
}

TEST_F(Generalized, AcceptsTolUpToOne) {
  for (const double t : {1.0, 5e-324}) {
    const auto call = [&](Rows m, Rows n) {
      return genvals(c, host.matrix(m), host.matrix(n), host.scalar(t));
    };
    expect_matrix(call({{3}}, {{2}}), {{1.5}});
    expect_complex_matrix(call({{3, 0}, {0, 1}}, {{1, 0}, {0, 2}}), {{3}, {0.5}});
  }
}

TEST_F(Generalized, OrderOneIsATable) {
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
TEST_F(Generalized, ExchangesTheRolesForASingularN) {
  aMatrix* const m = host.matrix({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  const auto call = [&](Handler handler, aMatrix* n, double tolerance) {
    return handler(c, m, n, host.scalar(tolerance));
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
  const std::vector<StdComplex> lambda = elements(as_result_matrix(call(genvals, spiral, 0.25)));
  ASSERT_EQ(lambda.size(), 2u);
  EXPECT_LT(std::abs(lambda[0] - StdComplex(0.2, -0.4)), 1e-15);
  EXPECT_LT(std::abs(lambda[1] - StdComplex(0.2, 0.4)), 1e-15);
}

// In every other case the problem is solved as it stands, and TOL drops nothing.
TEST_F(Generalized, SolvesTheProblemAsItStandsOtherwise) {
  const auto call = [&](Handler handler, aMatrix* m, aMatrix* n) {
    return handler(c, m, n, host.scalar(1));
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
TEST_F(Generalized, PartArraysOfTheResults) {
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

// Values and vectors belong together in both orientations, and the arguments stay as they are. What
// stays of a zero mu is dropped; the largest lambda spoils the smaller.
TEST_F(Generalized, ColumnsBelongToTheValues) {
  WorstRatio worst("generalized eigenproblem residual", 5);
  for (const int order : {2, 3, 5, 8, 9, 33}) {
    const Dense a = random_dense(order, order, 21);
    const Dense b = random_dense(order, order, 22);
    Dense singular = b;
    for (int i = 0; i < order; ++i) singular(i, order - 1) = order > 2 ? b(i, 0) : 0.0;
    for (const auto& [name, first, second, count] : {std::tuple{"both regular", a, b, order},
                                                     {"N singular", a, singular, order - 1},
                                                     {"M singular", singular, a, order}}) {
      const std::string at = std::string(name) + " n = " + std::to_string(order);
      Solver s;
      aMatrix* m = s.value_of(first);
      aMatrix* n = s.value_of(second);
      const auto values = elements(as_result_matrix(s.values(m, n)));
      const aMatrix* const vectors = as_result_matrix(s.vectors(m, n));
      ASSERT_EQ(values.size(), static_cast<std::size_t>(count)) << at;
      ASSERT_EQ(vectors->cols, count) << at;
      worst.expect(eigen_ratio(m, n, values, vectors), at);
      EXPECT_NEAR(norm_of(elements(vectors)), std::sqrt(count), 1e-13) << "columns of unit length";
    }
  }
}

// With Q and Z orthogonal, Q D Z and Q Z have the eigenvalues D.
TEST_F(Generalized, FindsKnownEigenvalues) {
  WorstRatio worst("genvals against known values", 20);
  for (const int order : {2, 5, 9, 20}) {
    const auto orthogonal = [&](unsigned seed) {
      return with_singular_values(order, order, seed, [](int) { return 1; });
    };
    const Dense q = orthogonal(31);
    const Dense z = orthogonal(57);
    const Dense d = filled(order, order, [](int i, int j) { return i == j ? i - 2.5 : 0.0; });
    std::vector<StdComplex> known;
    for (int i = 0; i < order; ++i) known.push_back(i - 2.5);
    Solver s;
    Anyval* const values =
        s.values(s.value_of(product(product(q, d), z)), s.value_of(product(q, z)));
    worst.expect(distance(elements(as_result_matrix(values)), known) / (order * 0x1p-52),
                 std::to_string(order));
    for (const double x : im_parts(as_result_matrix(values))) EXPECT_EQ(x, 0);
  }
}

}  // namespace
}  // namespace matrix_pack
