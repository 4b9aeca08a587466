// qr: residuals, the staircase, exact facts, messages, and the bits of the plain loops.
#include "linsys/qr.hpp"

#include <bit>
#include <limits>

#include "linsys/linsys.hpp"
#include "linsys/qr_plain.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using QrKernels = InEveryKernelSet;

struct Factors {
  Dense q;
  Dense r;
};

Factors factors_of(const Dense& a) {
  TestHost host;
  aMatrix* argument = host.matrix(a.rows, a.cols, a.a);
  aMatrix* q = nullptr;
  aMatrix* r = nullptr;
  EXPECT_EQ(qr_core(host.context(), argument, &q, &r), nullptr);
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

void expect_plain_bits(const Dense& a, const Factors& f, const std::string& name) {
  Dense r = a;
  Dense qt(a.rows, a.rows);
  plain::qr(a.rows, a.cols, r.a.data(), qt.a.data());
  EXPECT_TRUE(same(f.r, r)) << name << ", R";
  EXPECT_TRUE(same(f.q, transposed(qt))) << name << ", Q";
}

TEST_P(QrKernels, ResidualsAreSmallAndTheBitsThoseOfThePlainLoops) {
  WorstRatio residual("qr residual", 7);
  WorstRatio orthogonality("qr Q'Q - I", 10);
  const auto check = [&](const std::string& name, const Dense& a) {
    const Factors f = factors_of(a);
    residual.expect(ratio_of(difference(a, product(f.q, f.r)), size_of(a)), name);
    orthogonality.expect(orthogonality_ratio(f.q), name);
    EXPECT_TRUE(is_staircase(f.r)) << name;
    expect_plain_bits(a, f, name);
  };
  for (const auto& [m, n] : kTallShapes)
    for (const auto& [name, a, imaginary] : zoo(m, n, 21)) {
      check(name, a);
      if (m != n) check(name + " transposed", transposed(a));
    }
}

// Several columns of a large matrix are cleared at once where none of their elements may be
// negligible, too large, or no number. Its accumulator begins as the identity, and what is left of
// its rows is not stored: zeros of either sign, or no numbers.
TEST_P(QrKernels, LargeMatricesHaveThePlainBits) {
  const auto bits = [](const Dense& a) {
    std::vector<std::uint64_t> all;
    for (const double x : a.a)
      all.push_back(std::bit_cast<std::uint64_t>(std::isnan(x) ? kNan : x));
    return all;
  };
  for (const auto& [m, n] :
       {std::pair{65, 65}, {66, 3}, {97, 40}, {130, 130}, {160, 20}, {200, 90}})
    for (int kind = 0; kind <= 8; ++kind) {
      Dense a = random_dense(m, n, 17);
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) {
          if (kind == 1 && (i * 7 + j * 5) % 6 != 0) a(i, j) = 0;
          if (kind == 2) a(i, j) = (i * 37 + 11) % m == j ? -1.0 : 0.0;
          if (kind == 3 && j % 3 == 1) a(i, j) = a(i, j - 1) * (j % 2 == 0 ? -2 : 1);
          if (kind == 4 && i == m / 2 && j == n / 3) a(i, j) = kNan;
          if (kind == 5) a(i, j) *= std::ldexp(1.0, -(i + j) / 3);
          if (kind == 6 && i == m - 2 && j == n / 2) a(i, j) = 1e155;
          if (kind == 7 && i == m - 2 && j == n - 1) a(i, j) = -kInf;
          if (kind == 8 && j == n / 2) a(i, j) *= 1e-200;
        }
      Dense r = a;
      Dense qt(m, m);
      plain::qr(m, n, r.a.data(), qt.a.data());
      const Factors f = factors_of(a);
      EXPECT_EQ(bits(f.q), bits(transposed(qt))) << m << ' ' << n << ' ' << kind;
      EXPECT_TRUE(same(f.r, r)) << m << ' ' << n << ' ' << kind;
    }
}

// Columns that are not zero where later rotations turn them: the squares of their elements vanish,
// or a rotation is not a number.
TEST_P(QrKernels, UnclearColumnsHaveThePlainBitsToo) {
  for (const int vanishing : {0, 3, 34}) {
    Dense a = random_dense(45, 40, 5);
    for (int i = 0; i < a.rows; ++i) a(i, vanishing) *= 1e-200;
    expect_plain_bits(a, factors_of(a), "vanishing " + std::to_string(vanishing));
    a(20, 38) = std::numeric_limits<double>::quiet_NaN();
    expect_plain_bits(a, factors_of(a), "and not a number");
  }
}

IN_EVERY_KERNEL_SET(QrKernels);

TEST(Qr, ExactFacts) {
  TestHost host;
  const auto expect_factors = [&](aMatrix* a, Rows q, Rows r) {
    const auto parts = host.parts(qr(host.context(), a));
    ASSERT_EQ(parts.size(), 2u);
    expect_matrix(parts[0], q);
    expect_matrix(parts[1], r);
  };
  // The branch |b| > |a|: c = 0, s = 1.
  expect_factors(host.matrix({{0}, {1}}), {{0, -1}, {1, 0}}, {{1}, {0}});
  expect_factors(host.matrix({{3, -7, 2}}), {{1}}, {{3, -7, 2}});
  expect_factors(host.matrix({{-5}}), {{1}}, {{-5}});
  // A zero column takes no row.
  expect_factors(host.matrix({{0, 2}, {0, 0}}), {{1, 0}, {0, 1}}, {{0, 2}, {0, 0}});
  expect_factors(host.lean(2, 3), {{1, 0}, {0, 1}}, {{0, 0, 0}, {0, 0, 0}});
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

  expect_error(qr(host.context(), host.scalar(1)), "must be array", 0, 1);
  expect_error(qr(host.context(), host.complex_matrix({{1, 2}})), "must be real", 0, 1);
  aMatrix* const lying = host.matrix({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
  lying->byte_size = 71;
  expect_error(qr(host.context(), lying), "array size mismatch", 0, 1);
}

}  // namespace
}  // namespace matrix_pack
