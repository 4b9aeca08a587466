// The optimised inner loops and blocked cores give the bits of their plain forms in every kernel
// set.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "linsys/inverse.hpp"
#include "linsys/lu/lubacksub.hpp"
#include "linsys/lu/ludecomp.hpp"
#include "linsys/lu/plain.hpp"
#include "linsys/product_kernels.hpp"
#include "linsys/product_plain.hpp"
#include "pack/frame/faults.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/test_host.hpp"

namespace matrix_pack {
namespace {

using testing::for_each_kernel_set;
using Vector = std::vector<double>;

Vector random_vector(Index n, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::normal_distribution<double> normal;
  Vector x(static_cast<std::size_t>(n));
  for (double& element : x) element = normal(engine);
  return x;
}

bool same_bits(const double* x, const Vector& y) {
  return std::memcmp(x, y.data(), y.size() * sizeof(double)) == 0;
}

struct Shape {
  Index m, n, k;
};

// Around every tile and block size, and beyond.
constexpr Shape kShapes[] = {{1, 1, 1},     {2, 3, 5},    {7, 17, 3},   {8, 16, 64},  {9, 15, 65},
                             {31, 33, 2},   {48, 6, 7},   {49, 4, 129}, {64, 13, 1},  {100, 31, 70},
                             {513, 17, 66}, {3, 40, 200}, {5, 5, 0},    {129, 1, 64}, {63, 2, 63}};

// A, B and C as parts of larger arrays: odd starts, gaps between the columns.
struct Operands {
  Operands(Shape s, unsigned seed)
      : a(random_vector((s.m + 1) * (s.k + 1), seed)),
        b(random_vector((s.k + 2) * (s.n + 2), seed + 1)),
        c(random_vector((s.m + 3) * (s.n + 1), seed + 2)) {}
  Vector a, b, c;
};

TEST(LinsysKernels, ProductSubtractsTermAfterTerm) {
  for_each_kernel_set([] {
    for (const Shape s : kShapes) {
      const Index lda = s.m + 1, ldb = s.k + 2, ldc = s.m + 3;
      Operands x(s, 1);
      // B as it is, transposed, and A and B with their terms taken from the last to the first.
      const struct {
        Index a0, lda, b0, b_down, ldb;
      } forms[] = {
          {1, lda, 1, 1, ldb}, {0, lda, 0, s.n + 1, 1}, {(s.k - 1) * lda, -lda, s.k - 1, -1, ldb}};
      for (const auto& form : forms) {
        if (s.k == 0 && form.lda < 0) continue;
        Vector expected = x.c;
        Vector c = x.c;
        const ConstRealView a = {x.a.data() + form.a0, form.lda};
        const ConstRealView b = {x.b.data() + form.b0, form.ldb};
        plain::subtract_product(s.m, s.n, s.k, a, b, form.b_down, {expected.data() + 1, ldc});
        subtract_product(s.m, s.n, s.k, a, b, form.b_down, RealView{c.data() + 1, ldc});
        ASSERT_TRUE(same_bits(c.data(), expected)) << s.m << " " << s.n << " " << s.k;
      }
    }
  });
}

TEST(LinsysKernels, ComplexProductSubtractsTermAfterTerm) {
  for_each_kernel_set([] {
    for (const Shape s : kShapes) {
      const Index lda = s.m + 1, ldb = s.k + 2, ldc = s.m + 3;
      const Operands re(s, 1), im(s, 4);
      Vector expected_re = re.c, expected_im = im.c, c_re = re.c, c_im = im.c;
      const ConstComplexView a = {re.a.data(), im.a.data(), lda};
      const ConstComplexView b = {re.b.data(), im.b.data(), ldb};
      plain::subtract_product(s.m, s.n, s.k, a, b, 1,
                              ComplexView{expected_re.data(), expected_im.data(), ldc});
      subtract_product(s.m, s.n, s.k, a, b, 1, ComplexView{c_re.data(), c_im.data(), ldc});
      ASSERT_TRUE(same_bits(c_re.data(), expected_re)) << s.m << " " << s.n << " " << s.k;
      ASSERT_TRUE(same_bits(c_im.data(), expected_im)) << s.m << " " << s.n << " " << s.k;
    }
  });
}

constexpr Index kOrders[] = {1, 2, 3, 5, 8, 9, 17, 33, 63, 64, 65, 81, 130, 150};

// Rows of very different size, so that scaled pivoting has something to decide; every third element
// small, every fifth row equal to its neighbour in magnitude, so that candidates tie.
Vector test_elements(Index n, unsigned seed) {
  Vector a = random_vector(n * n, seed);
  for (Index j = 0; j < n; ++j)
    for (Index i = 0; i < n; ++i) {
      double& x = a[static_cast<std::size_t>(i + j * n)];
      if (i % 5 == 4) x = std::round(4 * x) / 4;
      x *= i % 3 == 0 ? 0x1p-40 : i % 7 == 0 ? 0x1p30 : 1.0;
    }
  return a;
}

// Random, but -0.0 at every second element, or at all: whether leading zeros are skipped shows in
// the signs of zeros.
Vector right_side(Index n, unsigned seed, bool nothing) {
  Vector b = random_vector(n, seed);
  for (std::size_t i = 0; i < b.size(); i += nothing ? 1 : 2) b[i] = -0.0;
  return b;
}

TEST(LinsysKernels, RealFactorsAndSolutionsHaveThePlainBits) {
  for_each_kernel_set([] {
    for (const Index n : kOrders) {
      for (const bool relative_test : {false, true}) {
        test::TestHost host;
        const Vector elements = test_elements(n, 7);
        Vector expected = elements, pivots(static_cast<std::size_t>(n)), scale = pivots, p = pivots;
        const plain::RealArray plain_lu = {n, expected.data()};
        const char* const message =
            plain::decompose(plain_lu, scale.data(), pivots.data(), relative_test);
        aMatrix* a = host.matrix(static_cast<int>(n), static_cast<int>(n), elements);
        double sign;
        ASSERT_STREQ(ludecomp(a, p.data(), &sign, relative_test), message) << n;
        if (message != nullptr) continue;
        ASSERT_TRUE(same_bits(a->re, expected)) << n;
        ASSERT_EQ(p, pivots);

        for (const bool nothing : {false, true}) {
          Vector b = right_side(n, 8, nothing);
          aMatrix* x = host.column(b);
          ASSERT_EQ(lubacksub(a, p.data(), x), nullptr);
          plain::substitute(plain_lu, pivots.data(), plain::RealArray{n, b.data()});
          ASSERT_TRUE(same_bits(x->re, b)) << n << nothing;
        }
      }
    }
  });
}

TEST(LinsysKernels, ComplexFactorsAndSolutionsHaveThePlainBits) {
  for_each_kernel_set([] {
    for (const Index n : kOrders) {
      for (const bool relative_test : {false, true}) {
        test::TestHost host;
        Vector re = test_elements(n, 9), im = test_elements(n, 10);
        for (std::size_t i = 0; i < re.size(); i += 4) (i % 8 == 0 ? re : im)[i] = 0.0;
        std::vector<test::Complex> elements(re.size());
        for (std::size_t i = 0; i < re.size(); ++i) elements[i] = {re[i], im[i]};
        Vector pivots(static_cast<std::size_t>(n)), scale = pivots, p = pivots;
        const plain::ComplexArray plain_lu = {n, {re.data(), im.data()}};
        const char* const message =
            plain::decompose(plain_lu, scale.data(), pivots.data(), relative_test);
        aMatrix* a = host.complex_matrix(static_cast<int>(n), static_cast<int>(n), elements);
        double sign;
        ASSERT_STREQ(cludecomp(a, p.data(), &sign, relative_test), message) << n;
        if (message != nullptr) continue;
        ASSERT_TRUE(same_bits(a->re, re) && same_bits(a->im, im)) << n;
        for (std::size_t k = 0; k < p.size(); ++k) ASSERT_EQ(p[k], pivots[k] + 1.0);

        for (const bool nothing : {false, true}) {
          Vector b_re = right_side(n, 11, nothing), b_im = right_side(n, 12, nothing);
          std::vector<test::Complex> b(b_re.size());
          for (std::size_t i = 0; i < b.size(); ++i) b[i] = {b_re[i], b_im[i]};
          aMatrix* x = host.complex_matrix(static_cast<int>(n), 1, b);
          ASSERT_EQ(clubacksub(a, p.data(), x), nullptr);
          plain::substitute(plain_lu, pivots.data(),
                            plain::ComplexArray{n, {b_re.data(), b_im.data()}});
          ASSERT_TRUE(same_bits(x->re, b_re) && same_bits(x->im, b_im)) << n << nothing;
        }
      }
    }
  });
}

// What a factorization answers: "" for factors.
template <class Factor>
std::string outcome(const Factor& factor) {
  try {
    const char* const message = factor();
    return message == nullptr ? "" : message;
  } catch (const SE_FPEOverflow_Exception&) {
    return "overflow";
  }
}

// What overflows: multipliers, of graded rows; elements, in all columns or in the last one, which
// begin at the edge of the range.
enum class Growing { multipliers, columns, last_column };

// Random, but what overflows begins at row and column `first`.
std::vector<test::Complex> overflowing(Index n, Index first, Growing growing, unsigned seed) {
  const Vector re = random_vector(n * n, seed), im = random_vector(n * n, seed + 1);
  std::vector<test::Complex> a(re.size());
  for (Index j = 0; j < n; ++j)
    for (Index i = 0; i < n; ++i) {
      const auto at = static_cast<std::size_t>(i + j * n);
      a[at] = {re[at], im[at]};
      if ((i < first) != (j < first)) a[at] = 0.0;
      if (i < first || j < first) continue;
      if (growing == Growing::multipliers)
        a[at] *= i % 2 == 0 ? 1e-100 : 1e100;
      else if (growing == Growing::columns || j == n - 1)
        a[at] = {std::copysign(9e153, re[at]), std::copysign(9e153, im[at])};
    }
  return a;
}

TEST(LinsysKernels, ModuliOverflowAsInThePlainLoops) {
  int overflows = 0;
  for_each_kernel_set([&] {
    for (const Index n : {5, 40, 70})
      for (const Index first : {Index{0}, Index{1}, n / 2, n - 3, n - 2})
        for (const Growing growing : {Growing::multipliers, Growing::columns, Growing::last_column})
          for (unsigned seed = 0; seed < 3; ++seed) {
            test::TestHost host;
            const auto elements = overflowing(n, first, growing, seed);
            Vector re, im, pivots(static_cast<std::size_t>(n)), scale = pivots;
            for (const test::Complex& z : elements) re.push_back(z.real()), im.push_back(z.imag());
            const std::string expected = outcome([&] {
              return plain::decompose(plain::ComplexArray{n, {re.data(), im.data()}}, scale.data(),
                                      pivots.data(), false);
            });
            overflows += expected == "overflow";
            aMatrix* a = host.complex_matrix(static_cast<int>(n), static_cast<int>(n), elements);
            double sign;
            EXPECT_EQ(outcome([&] { return cludecomp(a, nullptr, &sign, false); }), expected)
                << n << " from " << first << ", " << static_cast<int>(growing) << ", " << seed;
          }
  });
  EXPECT_GT(overflows, 50);
}

// Every column of the inverse is what lubacksub makes of its unit vector.
void expect_plain_inverse(Index n, const Vector& elements) {
  test::TestHost host;
  aMatrix* a = host.matrix(static_cast<int>(n), static_cast<int>(n), elements);
  aMatrix* inverse = nullptr;
  ASSERT_EQ(inv_core(host.context(), a, &inverse, false), nullptr) << n;
  Vector lu = elements, pivots(static_cast<std::size_t>(n)), scale = pivots;
  const plain::RealArray plain_lu = {n, lu.data()};
  ASSERT_EQ(plain::decompose(plain_lu, scale.data(), pivots.data(), false), nullptr);
  for (Index j = 0; j < n; ++j) {
    Vector b(static_cast<std::size_t>(n));
    b[static_cast<std::size_t>(j)] = 1.0;
    plain::substitute(plain_lu, pivots.data(), plain::RealArray{n, b.data()});
    for (Index i = 0; i < n; ++i) {
      const double x = test::re(inverse, static_cast<int>(i), static_cast<int>(j));
      const double y = b[static_cast<std::size_t>(i)];
      ASSERT_TRUE(std::memcmp(&x, &y, sizeof x) == 0 || (std::isnan(x) && std::isnan(y)))
          << n << " (" << i << ", " << j << ") " << x << " " << y;
    }
  }
}

TEST(LinsysKernels, InverseHasThePlainBitsOfEveryColumn) {
  for_each_kernel_set([] {
    for (const Index n : kOrders) expect_plain_inverse(n, test_elements(n, 13));
    // An infinite multiplier: columns that start below it must not meet it.
    expect_plain_inverse(2, {1e-300, 1e10, 1e-300, 1e300});
    expect_plain_inverse(3, {1e-300, 1e10, 1, 1e-300, 1e300, 0, 1e-305, 0, 1e300});
  });
}

TEST(LinsysKernels, ComplexInverseHasThePlainBitsOfEveryColumn) {
  for_each_kernel_set([] {
    for (const Index n : {1, 3, 8, 33, 65, 100}) {
      test::TestHost host;
      Vector re = test_elements(n, 14), im = test_elements(n, 15);
      std::vector<test::Complex> elements(re.size());
      for (std::size_t i = 0; i < re.size(); ++i) elements[i] = {re[i], im[i]};
      aMatrix* a = host.complex_matrix(static_cast<int>(n), static_cast<int>(n), elements);
      aMatrix* inverse = nullptr;
      ASSERT_EQ(cinv_core(host.context(), a, &inverse, false), nullptr) << n;
      Vector pivots(static_cast<std::size_t>(n)), scale = pivots;
      const plain::ComplexArray lu = {n, {re.data(), im.data()}};
      ASSERT_EQ(plain::decompose(lu, scale.data(), pivots.data(), false), nullptr);
      for (Index j = 0; j < n; ++j) {
        Vector b_re(static_cast<std::size_t>(n)), b_im(b_re);
        b_re[static_cast<std::size_t>(j)] = 1.0;
        plain::substitute(lu, pivots.data(), plain::ComplexArray{n, {b_re.data(), b_im.data()}});
        ASSERT_TRUE(same_bits(inverse->re + j * n, b_re) && same_bits(inverse->im + j * n, b_im))
            << n << " " << j;
      }
    }
  });
}

}  // namespace
}  // namespace matrix_pack
