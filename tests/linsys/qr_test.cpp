// qr: residuals, the staircase, exact facts, messages, and the bits of the plain loops.
#include "linsys/qr.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "linsys/linsys.hpp"
#include "linsys/qr_plain.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;

struct Factors {
  Dense q;
  Dense r;
};

Factors factors_of(const Dense& a) {
  TestHost host;
  aMatrix* argument = host.matrix(a.rows, a.cols, a.a);
  const Snapshot before(argument);
  aMatrix* q = nullptr;
  aMatrix* r = nullptr;
  EXPECT_EQ(qr_core(host.context(), argument, &q, &r), nullptr);
  EXPECT_TRUE(before.unchanged());
  return {{a.rows, a.rows, re_parts(q)}, {a.rows, a.cols, re_parts(r)}};
}

// Zero below a staircase that goes down one row at a time at the most.
bool is_staircase(const Dense& r) {
  int p = 0;
  for (int j = 0; j < r.cols; ++j) {
    if (p < r.rows && r(p, j) != 0) ++p;
    for (int i = p; i < r.rows; ++i)
      if (r(i, j) != 0) return false;
  }
  return true;
}

std::vector<Specimen> specimens() {
  std::vector<Specimen> all;
  for (const auto& [m, n] : kTallShapes) {
    for (auto& [name, a] : zoo(m, n, 21)) {
      all.push_back({name, a});
      if (m != n) all.push_back({name + " transposed", transposed(a)});
    }
  }
  return all;
}

TEST(Qr, ResidualsAreSmallOverTheZoo) {
  WorstRatio residual("qr residual");
  WorstRatio orthogonality("qr Q'Q - I");
  for (const auto& [name, a] : specimens()) {
    const Factors f = factors_of(a);
    EXPECT_LT(residual.note(ratio_of(difference(a, product(f.q, f.r)), size_of(a)), name), 10)
        << name;
    EXPECT_LT(orthogonality.note(orthogonality_ratio(f.q), name), 10) << name;
    EXPECT_TRUE(is_staircase(f.r)) << name;
  }
}

// Columns that are not zero where later rotations turn them: the squares of their elements vanish,
// or a rotation is not a number.
std::vector<Specimen> unclear_specimens() {
  std::vector<Specimen> all;
  for (const int vanishing : {0, 3, 34}) {
    Dense a = random_dense(45, 40, 5);
    for (int i = 0; i < a.rows; ++i) a(i, vanishing) *= 1e-200;
    all.push_back({"vanishing " + std::to_string(vanishing), a});
    a(20, 38) = std::numeric_limits<double>::quiet_NaN();
    all.push_back({"and not a number", a});
  }
  return all;
}

void expect_same(const Dense& a, const Dense& b, const std::string& name) {
  ASSERT_EQ(a.a.size(), b.a.size()) << name;
  for (std::size_t k = 0; k < a.a.size(); ++k)
    ASSERT_TRUE(a.a[k] == b.a[k] || (std::isnan(a.a[k]) && std::isnan(b.a[k])))
        << name << " at " << k << ": " << a.a[k] << ", " << b.a[k];
}

TEST(Qr, HasTheBitsOfThePlainLoops) {
  std::vector<Specimen> all = specimens();
  for (auto& specimen : unclear_specimens()) all.push_back(specimen);
  testing::for_each_kernel_set([&] {
    for (const auto& [name, a] : all) {
      Dense r = a;
      Dense qt(a.rows, a.rows);
      plain::qr(a.rows, a.cols, r.a.data(), qt.a.data());
      const Factors f = factors_of(a);
      expect_same(f.r, r, name + ", R");
      expect_same(f.q, transposed(qt), name + ", Q");
    }
  });
}

TEST(Qr, ExactFacts) {
  TestHost host;
  const auto expect_factors = [&](Rows a, Rows q, Rows r) {
    const auto parts = host.parts(qr(host.context(), host.matrix(a)));
    ASSERT_EQ(parts.size(), 2u);
    expect_matrix(parts[0], q);
    expect_matrix(parts[1], r);
  };
  // The branch |b| > |a|: c = 0, s = 1.
  expect_factors({{0}, {1}}, {{0, -1}, {1, 0}}, {{1}, {0}});
  expect_factors({{3, -7, 2}}, {{1}}, {{3, -7, 2}});
  expect_factors({{-5}}, {{1}}, {{-5}});
  // A zero column takes no row.
  expect_factors({{0, 2}, {0, 0}}, {{1, 0}, {0, 1}}, {{0, 2}, {0, 0}});
  const auto lean = host.parts(qr(host.context(), host.lean(2, 3)));
  expect_matrix(lean[0], {{1, 0}, {0, 1}});
  expect_matrix(lean[1], {{0, 0, 0}, {0, 0, 0}});
  // Rank 1: one step.
  const Factors f = factors_of(filled(5, 4, [](int i, int j) { return (i + 1.0) * (j + 1.0); }));
  for (int j = 0; j < 4; ++j)
    for (int i = 1; i < 5; ++i) EXPECT_EQ(f.r(i, j), 0);

  const Givens zero = givens_coeffs(5, 0);
  EXPECT_TRUE(zero.c == 1 && zero.s == 0);
  const Givens negative = givens_coeffs(-4, 4);
  EXPECT_TRUE(negative.c > 0 && negative.s < 0);
  const Givens steep = givens_coeffs(-1, 4);
  EXPECT_TRUE(steep.c < 0 && steep.s > 0);
}

TEST(Qr, MessagesAndExtremeArguments) {
  TestHost host;
  EfiCallContext* context = host.context();
  expect_error(qr(context, host.scalar(1)), "must be array", 0, 1);
  expect_error(qr(context, host.complex_matrix({{1, 2}})), "must be real", 0, 1);
  constexpr double kInf = std::numeric_limits<double>::infinity();
  for (const double x : {kInf, -kInf, kInf - kInf, 1e200, 1e-200})
    for (std::size_t place = 0; place < 4; ++place) {
      std::vector<double> elements = {1, 2, 3, 4};
      elements[place] = x;
      EXPECT_EQ(host.parts(qr(context, host.matrix(2, 2, elements))).size(), 2u);
    }
}

}  // namespace
}  // namespace matrix_pack
