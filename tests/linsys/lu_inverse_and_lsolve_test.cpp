// lu, inv and lsolve: what they return, refuse and survive.
#include <cmath>

#include "linsys/linsys.hpp"
#include "linsys/lu/ludecomp.hpp"
#include "pack/exports.hpp"
#include "pack/frame/fault_mode.hpp"
#include "pack/frame/fp_control.hpp"
#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;

class Lu : public InHost {
 protected:
  struct Factors {
    aMatrix *p, *l, *u;
  };
  Factors factors(Anyval* m) {
    const std::vector<aMatrix*> parts = host.parts(lu(c, m));
    if (parts.size() != 3) throw std::runtime_error("no factors");
    return {parts[0], parts[1], parts[2]};
  }
  aMatrix* make(const Dense& m) { return host.matrix(m.rows, m.cols, m.a); }
  // m + i/2 m', the elements of m' being those of m in reverse order.
  aMatrix* make_complex(const Dense& m) {
    std::vector<StdComplex> z;
    for (std::size_t k = 0; k < m.a.size(); ++k)
      z.emplace_back(m.a[k], m.a[m.a.size() - 1 - k] / 2);
    return host.complex_matrix(m.rows, m.cols, z);
  }
};

// A matrix for residuals; in place of a complex one, [re, -im; im, re].
Dense dense(const aMatrix* m, bool complex) {
  if (!complex) return filled(m->rows, m->cols, [=](int i, int j) { return re(m, i, j); });
  return filled(2 * m->rows, 2 * m->cols, [=](int i, int j) {
    const bool lower = i >= m->rows, right = j >= m->cols;
    const int k = lower ? i - m->rows : i, l = right ? j - m->cols : j;
    return lower == right ? re(m, k, l) : lower ? im(m, k, l) : -im(m, k, l);
  });
}

TEST_F(Lu, EveryMessageMarkAndArgument) {
  Anyval* const number = host.scalar(3);
  aMatrix* const square = host.matrix({{4, 1}, {2, 3}});
  aMatrix* const wide = host.matrix({{1, 2, 3}, {4, 5, 6}});
  aMatrix* const tall = host.matrix({{1, 4}, {2, 5}, {3, 6}});
  aMatrix* const none = host.matrix(0, 0, {});
  aMatrix* const overflowing = host.complex_matrix({{{1e200, 1e200}}});
  aMatrix* const v = host.column({1, 2});

  expect_error(lu(c, number), "must be array", 0, 0);
  expect_error(lu(c, wide), "must be square", 0, 1);
  expect_error(lu(c, tall), "must be square", 0, 0);
  expect_error(lu(c, host.lean(2, 2)), "PPnullPtr", 0, 0);
  expect_error(lu(c, none), "invalid dimension", 0, 0);
  for (aMatrix* const singular : {host.matrix({{1, 2}, {0, 0}}), host.matrix({{1, 2}, {2, 4}}),
                                  host.complex_matrix({{1, 2}, {2, 4}})}) {
    expect_error(lu(c, singular), "singular matrix", 0, 0);
    expect_error(::inv(c, singular), "singular matrix", 0, 0);
    expect_error(lsolve(c, singular, v), "singular matrix", 0, 0);
  }
  expect_error(lu(c, host.imaginary({{1, 2}, {2, 4}})), "singular matrix", 0, 0);
  // The parts count, not the modulus, which underflows.
  aMatrix* const tiny = host.complex_matrix({{{1e-170, 1e-170}}});
  EXPECT_EQ(re(factors(tiny).u, 0, 0), 1e-170);
  aMatrix* inverse = nullptr;
  ASSERT_EQ(::cinv(c, tiny, &inverse, true), nullptr);
  EXPECT_EQ(re(inverse, 0, 0), 5e169);
  expect_error(lu(c, overflowing), "overflow", 0, 0);
  expect_error(::inv(c, static_cast<Anyval*>(overflowing)), "overflow", 0, 0);
  expect_error(lsolve(c, overflowing, host.column({1})), "overflow", 0, 0);

  expect_error(::inv(c, host.function(nullptr)), "illegal context", 0, 1);
  for (Anyval* const wrong : {number, static_cast<Anyval*>(host.string("text"))})
    expect_error(::inv(c, wrong), "must be array", 0, 1);
  expect_error(::inv(c, host.nested(1, 2, {number, v})), "may not be nested", 0, 0);
  for (aMatrix* const m : {wide, tall}) {
    expect_error(::inv(c, static_cast<Anyval*>(m)), "must be square", 0, 0);
    expect_error(::inv(c, m), "must be square", 0, 0);
  }
  expect_error(::inv(c, host.lean(2, 2)), "Unknown error", 0, 0);
  expect_error(::inv(c, none), "invalid dimension", 0, 0);

  expect_error(lsolve(c, number, number), "must be array", 0, 1);
  expect_error(lsolve(c, square, number), "must be vector", 0, 2);
  expect_error(lsolve(c, wide, host.matrix({{1, 2}})), "must be vector", 0, 2);
  expect_error(lsolve(c, wide, v), "must be square", 0, 1);
  expect_error(lsolve(c, square, host.column({1, 2, 3})), "incompatible dimension", 2, 0);
  expect_error(lsolve(c, none, host.matrix(0, 1, {})), "invalid dimension", 0, 0);
  expect_error(lsolve(c, host.lean(2, 2), v), "PPnullPtr", 0, 0);
  expect_error(lsolve(c, square, host.lean(2, 1)), "Unknown error", 0, 0);
}

TEST_F(Lu, FactorsOfSmallIntegerMatricesAreExact) {
  const Factors one = factors(host.matrix({{-7}}));
  expect_matrix(one.p, {{1}});
  expect_matrix(one.l, {{1}});
  expect_matrix(one.u, {{-7}});
  // The weights of the first column are 1/2, 4/8, 8/8: the last row is taken, then the last again.
  const Factors f = factors(host.matrix({{1, 2, 2}, {4, 4, 8}, {8, 4, 4}}));
  expect_matrix(f.p, {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}});
  expect_matrix(f.l, {{1, 0, 0}, {0.125, 1, 0}, {0.5, 4 / 3.0, 1}});
  EXPECT_EQ(re(f.u, 1, 1), 1.5);
  EXPECT_EQ(f.l->im, nullptr);
  const Factors z = factors(host.complex_matrix({{0, {0, 2}}, {{3, 4}, 0}}));
  expect_matrix(z.p, {{0, 1}, {1, 0}});
  expect_matrix(z.l, {{1, 0}, {0, 1}});
  expect_complex_matrix(z.u, {{{3, 4}, 0}, {0, {0, 2}}});
}

TEST_F(Lu, TiesGoToTheLastRowAndInTheComplexCoreToTheFirst) {
  // All weights are 1 at first, and candidates tie at every later step too.
  const Rows rows = {{1, 1, 1, 1}, {1, -1, 1, -1}, {1, 1, -1, -1}, {1, -1, -1, 1}};
  expect_matrix(factors(host.matrix(rows)).p,
                {{0, 0, 0, 1}, {1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}});
  const Factors z =
      factors(host.complex_matrix({{1, 1, 1, 1}, {1, -1, 1, -1}, {1, 1, -1, -1}, {1, -1, -1, 1}}));
  expect_matrix(z.p, {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}});
  // Imaginary parts that are all zero are not handed out.
  EXPECT_EQ(z.l->im, nullptr);
  EXPECT_EQ(z.u->im, nullptr);
}

void expect_triangles(const aMatrix* l, const aMatrix* u) {
  for (int j = 0; j < l->cols; ++j)
    for (int i = 0; i <= j; ++i) {
      EXPECT_EQ(StdComplex(re(l, i, j), im(l, i, j)), i == j ? 1.0 : 0.0);
      EXPECT_TRUE(i == j || (re(u, j, i) == 0.0 && im(u, j, i) == 0.0));
    }
}

// Residuals are measured by |L||U|, or |A||X| for an inverse: the growth of the elimination and the
// condition of the matrix are not the method's fault.
TEST_F(Lu, ResidualsAreSmall) {
  WorstRatio worst_lu("|PA - LU|", 0.5), worst_solve("|Ax - b|", 0.5),
      worst_inverse("|AX - I|", 0.5);
  for (const int n : {1, 2, 3, 5, 8, 9, 33, 65}) {
    for (const Specimen& specimen : zoo(n, n, 17)) {
      for (const bool complex : {false, true}) {
        const std::string name = specimen.name + (complex ? " complex" : "");
        SCOPED_TRACE(name);
        aMatrix* const m = complex ? make_complex(specimen.matrix) : make(specimen.matrix);
        const Dense a = dense(m, complex);
        Anyval* const joined = lu(c, m);
        Anyval* const inverse = ::inv(c, static_cast<Anyval*>(m));
        Anyval* const v = host.column(
            std::vector<double>(specimen.matrix.a.begin(), specimen.matrix.a.begin() + n));
        Anyval* const solution = lsolve(c, m, v);
        if (joined->kind == kErrorKind) {
          EXPECT_FALSE(specimen.name.starts_with("random  ")) << "a general one";
          for (Anyval* const value : {joined, inverse, solution})
            expect_error(value, "singular matrix", 0, 0);
          continue;
        }

        const std::vector<aMatrix*> f = host.parts(joined);
        expect_triangles(f[1], f[2]);
        const Dense p = dense(f[0], complex), l = dense(f[1], complex), u = dense(f[2], complex);
        const double size = size_of(l) * size_of(u);
        worst_lu.expect(ratio_of(difference(product(p, a), product(l, u)), size), name);
        const Dense x = dense(as_result_matrix(solution), complex);
        const Dense b = dense(static_cast<aMatrix*>(v), complex);
        worst_solve.expect(ratio_of(difference(product(a, x), b), size * size_of(x)), name);
        if (inverse->kind == kErrorKind) {
          expect_error(inverse, "singular matrix", 0, 0);
          continue;
        }
        const Dense y = dense(as_result_matrix(inverse), complex);
        const Dense residual = difference(product(a, y), identity_dense(a.rows));
        worst_inverse.expect(ratio_of(residual, size * size_of(y)), name);
      }
    }
  }
}

TEST_F(Lu, InverseAndSolutionsOfSmallSystemsAreExact) {
  expect_matrix(::inv(c, host.matrix({{4}})), {{0.25}});
  aMatrix* const inverse = as_result_matrix(::inv(c, host.matrix({{0, 2}, {-4, 0}})));
  expect_matrix(inverse, {{0, -0.25}, {0.5, 0}});
  EXPECT_EQ(inverse->im, nullptr);
  expect_complex_matrix(::inv(c, host.complex_matrix({{{0, 2}, 0}, {0, {1, 1}}})),
                        {{{0, -0.5}, 0}, {0, {0.5, -0.5}}});
  // A complex matrix stays one, also with an imaginary part of zeros.
  aMatrix* const complex = as_result_matrix(::inv(c, host.complex_matrix(1, 1, {{4.0, 0.0}})));
  EXPECT_NE(complex->im, nullptr);
  expect_complex_matrix(::inv(c, host.imaginary({{4}})), {{{0, -0.25}}});

  expect_matrix(lsolve(c, host.matrix({{4}}), host.column({2})), {{0.5}});
  expect_matrix(lsolve(c, host.matrix({{4, 1}, {2, 3}}), host.column({6, 8})), {{1}, {2}});
  expect_complex_matrix(
      lsolve(c, host.matrix({{0, 2}, {4, 0}}), host.complex_matrix({{{2, 4}}, {{8, -4}}})),
      {{{2, -1}}, {{1, 2}}});
  aMatrix* const x = as_result_matrix(
      lsolve(c, host.complex_matrix({{{0, 1}, 0}, {0, {0, 2}}}), host.column({1, 2})));
  expect_complex_matrix(x, {{{0, -1}}, {{0, -1}}});
  // Real parts are not made up where v has none and the solution needs none.
  aMatrix* const imaginary = as_result_matrix(lsolve(c, host.matrix({{2}}), host.imaginary({{4}})));
  expect_complex_matrix(imaginary, {{{0, 2}}});
  EXPECT_EQ(imaginary->re, nullptr);
}

TEST_F(Lu, OnlyTheInverseRefusesTinyPivots) {
  const auto diagonal = [&](double d) { return host.matrix({{1, 0}, {0, d}}); };
  EXPECT_EQ(as_result_matrix(::inv(c, diagonal(0x1p-52)))->rows, 2);
  aMatrix* const near_singular = diagonal(0x1p-53);
  expect_error(::inv(c, near_singular), "singular matrix", 0, 0);
  expect_matrix(factors(near_singular).u, {{1, 0}, {0, 0x1p-53}});
  expect_matrix(lsolve(c, near_singular, host.column({1, 1})), {{1}, {0x1p53}});

  const auto complex_diagonal = [&](double d) {
    return host.complex_matrix({{1, 0}, {0, {0, d}}});
  };
  EXPECT_EQ(as_result_matrix(::inv(c, complex_diagonal(0x1p-104)))->rows, 2);
  expect_error(::inv(c, complex_diagonal(0x1p-105)), "singular matrix", 0, 0);
  aMatrix* inverse = nullptr;
  EXPECT_EQ(::cinv(c, complex_diagonal(0x1p-105), &inverse, false), nullptr);
  EXPECT_STREQ(::cinv(c, complex_diagonal(0x1p-105), &inverse, true), "singular matrix");
  EXPECT_STREQ(::cinv(c, host.complex_matrix({{{1e200, 1}}}), &inverse, true), "overflow");

  // Twin columns: the pivot that is no more than rounding errors stands in a late panel.
  Dense m = random_dense(150, 150, 4);
  for (int i = 0; i < 150; ++i) m(i, 140) = m(i, 3);
  aMatrix* const twins = make(m);
  expect_error(::inv(c, twins), "singular matrix", 0, 0);
  EXPECT_EQ(host.parts(lu(c, twins)).size(), 3u);
}

// An overflow whose infinity goes on to spoil other elements: where faults do not trap, all of them
// are found at the end, and invalid operations are named first.
const char* const kOverflowThenInvalid = faults_trap() ? "overflow" : "floating point error";

TEST_F(Lu, FaultsUnderTheGuardBecomeMessages) {
  for (const int n : {3, 30, 100}) {
    const auto expect_inverse = [&](const Dense& m, const char* message) {
      expect_error(::inv(c, static_cast<Anyval*>(make(m))), message, 0, 0);
    };
    Dense m = random_dense(n, n, 5);
    expect_inverse(changed(m, [](int, int, double x) { return x < 0 ? -1.5e308 : 1.5e308; }),
                   kOverflowThenInvalid);
    for (const double bad : {kNan, kInf}) {
      m(n / 2, 1) = bad;
      expect_inverse(m, "floating point error");
    }
  }
}

// The sign of the permutation, which a determinant would need, though no function reads it yet.
TEST_F(Lu, TheCoresTellTheSignOfThePermutation) {
  const std::pair<std::array<int, 3>, double> cases[] = {
      {{0, 1, 2}, 1}, {{1, 0, 2}, -1}, {{1, 2, 0}, 1}, {{2, 1, 0}, -1}};
  for (const auto& [order, expected] : cases) {
    const Dense p = filled(3, 3, [&](int i, int j) { return order[std::size_t(i)] == j; });
    double pivots[3], sign = 0, complex_sign = 0;
    EXPECT_EQ(ludecomp(make(p), pivots, &sign, false), nullptr);
    EXPECT_EQ(sign, expected);
    std::vector<StdComplex> z;
    for (const double x : p.a) z.emplace_back(x);
    EXPECT_EQ(cludecomp(host.complex_matrix(3, 3, z), nullptr, &complex_sign, false), nullptr);
    EXPECT_EQ(complex_sign, expected);
  }
}

}  // namespace
}  // namespace matrix_pack
