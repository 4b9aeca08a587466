// lu, inv and lsolve: what they return, refuse and survive.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

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

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

class Lu : public ::testing::Test {
 protected:
  TestHost host;
  EfiCallContext* context = host.context();

  struct Factors {
    aMatrix *p, *l, *u;
  };
  Factors factors(Anyval* m) {
    const std::vector<aMatrix*> parts = host.parts(lu(context, m));
    if (parts.size() != 3) throw std::runtime_error("no factors");
    return {parts[0], parts[1], parts[2]};
  }
  aMatrix* make(const Dense& m) { return host.matrix(m.rows, m.cols, m.a); }
  // m + i/2 m', the elements of m' being those of m in reverse order.
  aMatrix* make_complex(const Dense& m) {
    std::vector<Complex> z;
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
  aMatrix* const v = host.column({1, 2});

  expect_error(lu(context, number), "must be array", 0, 0);
  expect_error(lu(context, wide), "must be square", 0, 1);
  expect_error(lu(context, tall), "must be square", 0, 0);
  expect_error(lu(context, host.lean(2, 2)), "PPnullPtr", 0, 0);
  expect_error(lu(context, host.matrix(0, 0, {})), "invalid dimension", 0, 0);
  expect_error(lu(context, host.matrix({{1, 2}, {0, 0}})), "singular matrix", 0, 0);
  expect_error(lu(context, host.matrix({{1, 2}, {2, 4}})), "singular matrix", 0, 0);
  expect_error(lu(context, host.imaginary({{1, 2}, {2, 4}})), "singular matrix", 0, 0);
  expect_error(lu(context, host.complex_matrix({{{1e200, 1e200}}})), "overflow", 0, 0);

  expect_error(::inv(context, host.function(nullptr)), "illegal context", 0, 1);
  expect_error(::inv(context, number), "must be array", 0, 1);
  expect_error(::inv(context, host.string("text")), "must be array", 0, 1);
  expect_error(::inv(context, host.nested(1, 2, {number, v})), "may not be nested", 0, 0);
  for (aMatrix* const m : {wide, tall}) {
    expect_error(::inv(context, static_cast<Anyval*>(m)), "must be square", 0, 0);
    expect_error(::inv(context, m), "must be square", 0, 0);
  }
  expect_error(::inv(context, host.lean(2, 2)), "Unknown error", 0, 0);
  expect_error(::inv(context, host.matrix(0, 0, {})), "invalid dimension", 0, 0);
  expect_error(::inv(context, host.matrix({{0}})), "singular matrix", 0, 0);
  expect_error(::inv(context, host.complex_matrix({{1, 2}, {2, 4}})), "singular matrix", 0, 0);

  expect_error(lsolve(context, number, number), "must be array", 0, 1);
  expect_error(lsolve(context, square, number), "must be vector", 0, 2);
  expect_error(lsolve(context, wide, host.matrix({{1, 2}})), "must be vector", 0, 2);
  expect_error(lsolve(context, wide, v), "must be square", 0, 1);
  expect_error(lsolve(context, square, host.column({1, 2, 3})), "incompatible dimension", 2, 0);
  expect_error(lsolve(context, host.matrix(0, 0, {}), host.matrix(0, 1, {})), "invalid dimension",
               0, 0);
  expect_error(lsolve(context, host.matrix({{1, 2}, {2, 4}}), v), "singular matrix", 0, 0);
  expect_error(lsolve(context, host.lean(2, 2), v), "PPnullPtr", 0, 0);
  expect_error(lsolve(context, square, host.lean(2, 1)), "Unknown error", 0, 0);
  expect_error(lsolve(context, host.complex_matrix({{{1e200, 1e200}}}), host.column({1})),
               "overflow", 0, 0);
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
  aMatrix* const with_imag =
      host.complex_matrix({{1, 1, 1, {1, 0}}, {1, -1, 1, -1}, {1, 1, -1, -1}, {1, -1, -1, 1}});
  ASSERT_NE(with_imag->im, nullptr);
  const Factors z = factors(with_imag);
  expect_matrix(z.p, {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}});
  // Imaginary parts that are all zero are not handed out.
  EXPECT_EQ(z.l->im, nullptr);
  EXPECT_EQ(z.u->im, nullptr);
}

TEST_F(Lu, ScalingByPowersOfTwoScalesU) {
  Dense m = random_dense(70, 70, 1);
  const Factors f = factors(make(m));
  for (double& x : m.a) x *= 0x1p-30;
  const Factors scaled = factors(make(m));
  EXPECT_EQ(re_parts(f.p), re_parts(scaled.p));
  EXPECT_EQ(re_parts(f.l), re_parts(scaled.l));
  std::vector<double> u = re_parts(f.u);
  for (double& x : u) x *= 0x1p-30;
  EXPECT_EQ(u, re_parts(scaled.u));
}

void expect_triangles(const aMatrix* l, const aMatrix* u) {
  for (int j = 0; j < l->cols; ++j) {
    EXPECT_EQ(re(l, j, j), 1.0);
    EXPECT_EQ(im(l, j, j), 0.0);
    for (int i = 0; i < j; ++i) {
      EXPECT_EQ(re(l, i, j), 0.0);
      EXPECT_EQ(im(l, i, j), 0.0);
      EXPECT_EQ(re(u, j, i), 0.0);
      EXPECT_EQ(im(u, j, i), 0.0);
    }
  }
}

// Residuals are measured by |L||U|, or |A||X| for an inverse: the growth of the elimination and the
// condition of the matrix are not the method's fault.
TEST_F(Lu, ResidualsAreSmall) {
  WorstRatio worst_lu("|PA - LU|"), worst_solve("|Ax - b|"), worst_inverse("|AX - I|");
  for (const int n : {1, 2, 3, 5, 8, 9, 33, 65, 80}) {
    for (const Specimen& specimen : zoo(n, n, 17)) {
      for (const bool complex : {false, true}) {
        const std::string name = specimen.name + (complex ? " complex" : "");
        SCOPED_TRACE(name);
        aMatrix* const m = complex ? make_complex(specimen.matrix) : make(specimen.matrix);
        const Dense a = dense(m, complex);
        const Snapshot before(m);
        Anyval* const joined = lu(context, m);
        Anyval* const inverse = ::inv(context, static_cast<Anyval*>(m));
        Anyval* const v = host.column(
            std::vector<double>(specimen.matrix.a.begin(), specimen.matrix.a.begin() + n));
        Anyval* const solution = lsolve(context, m, v);
        EXPECT_TRUE(before.unchanged());
        if (joined->kind == kErrorKind) {
          EXPECT_NE(specimen.name.rfind("random", 0), 0u);
          for (Anyval* const value : {joined, inverse, solution})
            expect_error(value, "singular matrix", 0, 0);
          continue;
        }

        const std::vector<aMatrix*> f = host.parts(joined);
        expect_triangles(f[1], f[2]);
        const Dense p = dense(f[0], complex), l = dense(f[1], complex), u = dense(f[2], complex);
        const double size = size_of(l) * size_of(u);
        EXPECT_LT(worst_lu.note(ratio_of(difference(product(p, a), product(l, u)), size), name),
                  0.5);
        const Dense x = dense(as_result_matrix(solution), complex);
        const Dense b = dense(static_cast<aMatrix*>(v), complex);
        EXPECT_LT(worst_solve.note(ratio_of(difference(product(a, x), b), size * size_of(x)), name),
                  0.5);
        if (inverse->kind == kErrorKind) {
          expect_error(inverse, "singular matrix", 0, 0);
          continue;
        }
        const Dense y = dense(as_result_matrix(inverse), complex);
        const Dense residual = difference(product(a, y), identity_dense(a.rows));
        EXPECT_LT(worst_inverse.note(ratio_of(residual, size * size_of(y)), name), 0.5);
      }
    }
  }
}

TEST_F(Lu, InverseAndSolutionsOfSmallSystemsAreExact) {
  expect_matrix(::inv(context, host.matrix({{4}})), {{0.25}});
  aMatrix* const inverse = as_result_matrix(::inv(context, host.matrix({{0, 2}, {-4, 0}})));
  expect_matrix(inverse, {{0, -0.25}, {0.5, 0}});
  EXPECT_EQ(inverse->im, nullptr);
  expect_complex_matrix(::inv(context, host.complex_matrix({{{0, 2}, 0}, {0, {1, 1}}})),
                        {{{0, -0.5}, 0}, {0, {0.5, -0.5}}});
  // A complex matrix stays one, also with an imaginary part of zeros.
  aMatrix* const complex =
      as_result_matrix(::inv(context, host.complex_matrix(1, 1, {{4.0, 0.0}})));
  EXPECT_NE(complex->im, nullptr);
  expect_complex_matrix(::inv(context, host.imaginary({{4}})), {{{0, -0.25}}});

  expect_matrix(lsolve(context, host.matrix({{4}}), host.column({2})), {{0.5}});
  expect_matrix(lsolve(context, host.matrix({{4, 1}, {2, 3}}), host.column({6, 8})), {{1}, {2}});
  expect_complex_matrix(
      lsolve(context, host.matrix({{0, 2}, {4, 0}}), host.complex_matrix({{{2, 4}}, {{8, -4}}})),
      {{{2, -1}}, {{1, 2}}});
  aMatrix* const x = as_result_matrix(
      lsolve(context, host.complex_matrix({{{0, 1}, 0}, {0, {0, 2}}}), host.column({1, 2})));
  expect_complex_matrix(x, {{{0, -1}}, {{0, -1}}});
  // Real parts are not made up where v has none and the solution needs none.
  aMatrix* const imaginary =
      as_result_matrix(lsolve(context, host.matrix({{2}}), host.imaginary({{4}})));
  expect_complex_matrix(imaginary, {{{0, 2}}});
  EXPECT_EQ(imaginary->re, nullptr);
}

TEST_F(Lu, OnlyTheInverseRefusesTinyPivots) {
  const auto diagonal = [&](double d) { return host.matrix({{1, 0}, {0, d}}); };
  EXPECT_EQ(as_result_matrix(::inv(context, diagonal(0x1p-52)))->rows, 2);
  aMatrix* const near_singular = diagonal(0x1p-53);
  expect_error(::inv(context, near_singular), "singular matrix", 0, 0);
  expect_matrix(factors(near_singular).u, {{1, 0}, {0, 0x1p-53}});
  expect_matrix(lsolve(context, near_singular, host.column({1, 1})), {{1}, {0x1p53}});

  const auto complex_diagonal = [&](double d) {
    return host.complex_matrix({{1, 0}, {0, {0, d}}});
  };
  EXPECT_EQ(as_result_matrix(::inv(context, complex_diagonal(0x1p-104)))->rows, 2);
  expect_error(::inv(context, complex_diagonal(0x1p-105)), "singular matrix", 0, 0);
  aMatrix* inverse = nullptr;
  EXPECT_EQ(::cinv(context, complex_diagonal(0x1p-105), &inverse, false), nullptr);
  EXPECT_STREQ(::cinv(context, complex_diagonal(0x1p-105), &inverse, true), "singular matrix");
  EXPECT_STREQ(::cinv(context, host.complex_matrix({{{1e200, 1}}}), &inverse, true), "overflow");

  // Twin columns: the pivot that is no more than rounding errors stands in a late panel.
  Dense m = random_dense(150, 150, 4);
  for (int i = 0; i < 150; ++i) m(i, 140) = m(i, 3);
  aMatrix* const twins = make(m);
  expect_error(::inv(context, twins), "singular matrix", 0, 0);
  EXPECT_EQ(host.parts(lu(context, twins)).size(), 3u);
}

// An overflow whose infinity goes on to spoil other elements: where faults do not trap, all of them
// are found at the end, and invalid operations are named first.
const char* const kOverflowThenInvalid = faults_trap() ? "overflow" : "floating point error";

TEST_F(Lu, FaultsUnderTheGuardBecomeMessages) {
  const auto guarded_inverse = [&](aMatrix* m) { return ::inv(context, static_cast<Anyval*>(m)); };
  for (const int n : {3, 30, 100}) {
    Dense m = random_dense(n, n, 5);
    for (double& x : m.a) x = x < 0 ? -1.5e308 : 1.5e308;
    expect_error(guarded_inverse(make(m)), kOverflowThenInvalid, 0, 0);
    for (const double bad : {kNaN, kInf}) {
      m = random_dense(n, n, 6);
      m(n / 2, 1) = bad;
      expect_error(guarded_inverse(make(m)), "floating point error", 0, 0);
    }
  }
  expect_error(guarded_inverse(host.matrix({{1e-310}})), "overflow", 0, 0);
  expect_error(guarded_inverse(host.complex_matrix({{{1e200, 1e200}}})), "overflow", 0, 0);
}

TEST_F(Lu, NonFiniteInputEndsWithAValueOrAMessage) {
  for (const int n : {1, 3, 70}) {
    for (const double bad : {kNaN, kInf, -kInf, 1e308}) {
      for (const bool complex : {false, true}) {
        Dense a = random_dense(n, n, 7);
        for (std::size_t k = 0; k < a.a.size(); k += 3) a.a[k] = bad;
        aMatrix* const m = complex ? make_complex(a) : make(a);
        Anyval* const v = host.column(std::vector<double>(static_cast<std::size_t>(n), bad));
        for (Anyval* const value : {lu(context, m), lsolve(context, m, v), ::inv(context, m)}) {
          ASSERT_NE(value, nullptr);
          EXPECT_TRUE(value->kind == kMatrixKind || value->kind == kErrorKind) << describe(value);
        }
      }
    }
  }
}

// Any allocation may fail: the value for exhausted memory, or the message.
TEST_F(Lu, ExhaustedMemory) {
  aMatrix* const real = make(random_dense(70, 70, 2));
  aMatrix* const complex = make_complex(random_dense(5, 5, 3));
  aMatrix* const imaginary = host.imaginary({{1, 2}, {3, 4}});
  const auto sweep = [&](auto call) {
    const Anyval* const result = with_failing_allocations(call, [](Anyval* value, int nth) {
      ASSERT_NE(value, nullptr) << nth;
      if (value != sError_OutOfMemory) expect_error(value, "out of memory", 0, 0);
    });
    EXPECT_EQ(result->kind, kMatrixKind);
  };
  for (aMatrix* const m : {real, complex, imaginary}) {
    const Snapshot before(m);
    aMatrix* const v = host.column(std::vector<double>(static_cast<std::size_t>(m->rows), 1.0));
    sweep([&] { return lu(context, m); });
    if (m != imaginary) sweep([&] { return ::inv(context, static_cast<Anyval*>(m)); });
    sweep([&] { return lsolve(context, m, v); });
    EXPECT_TRUE(before.unchanged());
  }
}

}  // namespace
}  // namespace matrix_pack
