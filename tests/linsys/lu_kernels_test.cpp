// The optimised inner loops and blocked cores give the bits of their plain forms in every kernel
// set.
#include <cmath>
#include <cstring>
#include <set>
#include <vector>

#include "linsys/inverse.hpp"
#include "linsys/lu/lubacksub.hpp"
#include "linsys/lu/ludecomp.hpp"
#include "linsys/lu/plain.hpp"
#include "linsys/product_kernels.hpp"
#include "linsys/product_plain.hpp"
#include "pack/exports.hpp"
#include "pack/frame/faults.hpp"
#include "pack/frame/guard.hpp"
#include "pack/results.hpp"
#include "tests/calls/outcome.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using LinsysKernels = test::InEveryKernelSet;
using Vector = std::vector<double>;

Vector random_vector(Index n, unsigned seed) {
  return test::random_dense(static_cast<int>(n), 1, seed).a;
}

bool same_bits(const double* x, const Vector& y) {
  for (std::size_t k = 0; k < y.size(); ++k)
    if (std::memcmp(&x[k], &y[k], sizeof y[k]) != 0 && !(std::isnan(x[k]) && std::isnan(y[k])))
      return false;
  return true;
}

struct Shape {
  Index m, n, k;
};

// Around every tile and block size, and beyond.
constexpr Shape kShapes[] = {{1, 1, 1},     {2, 3, 5},    {7, 17, 3},   {8, 16, 64},  {9, 15, 65},
                             {31, 33, 2},   {48, 6, 7},   {49, 4, 129}, {64, 13, 1},  {100, 31, 70},
                             {513, 17, 66}, {3, 40, 200}, {5, 5, 0},    {129, 1, 64}, {63, 2, 63}};

// A, B and C are parts of larger arrays: odd starts, gaps between the columns.
TEST_P(LinsysKernels, ProductsSubtractTermAfterTerm) {
  for (const Shape s : kShapes) {
    const Index lda = s.m + 1, ldb = s.k + 2, ldc = s.m + 3;
    const auto operands = [&](unsigned seed) {
      return std::tuple{random_vector(lda * (s.k + 1), seed),
                        random_vector(ldb * (s.n + 2), seed + 1),
                        random_vector(ldc * (s.n + 1), seed + 2)};
    };
    const auto [a_re, b_re, c_re] = operands(1);
    const auto [a_im, b_im, c_im] = operands(4);
    SCOPED_TRACE(std::to_string(s.m) + " " + std::to_string(s.n) + " " + std::to_string(s.k));
    // B as it is, transposed, and A and B with their terms taken from the last to the first.
    const struct {
      Index a0, lda, b0, b_down, ldb;
    } forms[] = {
        {1, lda, 1, 1, ldb}, {0, lda, 0, s.n + 1, 1}, {(s.k - 1) * lda, -lda, s.k - 1, -1, ldb}};
    for (const auto& form : forms) {
      if (s.k == 0 && form.lda < 0) continue;
      Vector expected = c_re, c = c_re;
      const ConstRealView a = {a_re.data() + form.a0, form.lda};
      const ConstRealView b = {b_re.data() + form.b0, form.ldb};
      plain::subtract_product(s.m, s.n, s.k, a, b, form.b_down, {expected.data() + 1, ldc});
      subtract_product(s.m, s.n, s.k, a, b, form.b_down, RealView{c.data() + 1, ldc});
      ASSERT_TRUE(same_bits(c.data(), expected));
    }
    Vector expected_re = c_re, expected_im = c_im, re = c_re, im = c_im;
    const ConstComplexView a = {a_re.data(), a_im.data(), lda}, b = {b_re.data(), b_im.data(), ldb};
    plain::subtract_product(s.m, s.n, s.k, a, b, 1,
                            ComplexView{expected_re.data(), expected_im.data(), ldc});
    subtract_product(s.m, s.n, s.k, a, b, 1, ComplexView{re.data(), im.data(), ldc});
    ASSERT_TRUE(same_bits(re.data(), expected_re) && same_bits(im.data(), expected_im));
  }
}

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

// Numbers; real ones have no imaginary part.
struct Numbers {
  Vector re, im;

  aMatrix* on(test::TestHost& host, Index rows) const {
    const auto cols = static_cast<int>(static_cast<Index>(re.size()) / rows);
    if (im.empty()) return host.matrix(static_cast<int>(rows), cols, re);
    std::vector<test::StdComplex> z;
    for (std::size_t k = 0; k < re.size(); ++k) z.emplace_back(re[k], im[k]);
    return host.complex_matrix(static_cast<int>(rows), cols, z);
  }
  bool are_those_of(const aMatrix* m, Index from = 0) const {
    return same_bits(m->re + from, re) && (im.empty() || same_bits(m->im + from, im));
  }
};

Numbers test_matrix(Index n, unsigned seed, bool complex) {
  Numbers a = {test_elements(n, seed), {}};
  if (!complex) return a;
  a.im = test_elements(n, seed + 1);
  for (std::size_t i = 0; i < a.re.size(); i += 4) (i % 8 == 0 ? a.re : a.im)[i] = 0.0;
  return a;
}

// Factors in plain loops.
struct PlainLu {
  Index n;
  Numbers a;
  Vector pivots = Vector(static_cast<std::size_t>(n)), scale = pivots;

  const char* decompose(bool relative_test) {
    if (a.im.empty())
      return plain::decompose(plain::RealArray{n, a.re.data()}, scale.data(), pivots.data(),
                              relative_test);
    return plain::decompose(plain::ComplexArray{n, {a.re.data(), a.im.data()}}, scale.data(),
                            pivots.data(), relative_test);
  }
  void substitute(Numbers& b) {
    if (a.im.empty())
      return plain::substitute(plain::RealArray{n, a.re.data()}, pivots.data(),
                               plain::RealArray{n, b.re.data()});
    plain::substitute(plain::ComplexArray{n, {a.re.data(), a.im.data()}}, pivots.data(),
                      plain::ComplexArray{n, {b.re.data(), b.im.data()}});
  }
};

// Random, but -0.0 at every second element, or at all: whether leading zeros are skipped shows in
// the signs of zeros.
Vector right_side(Index n, unsigned seed, bool nothing) {
  Vector b = random_vector(n, seed);
  for (std::size_t i = 0; i < b.size(); i += nothing ? 1 : 2) b[i] = -0.0;
  return b;
}

const std::vector<int> kFactorOrders =
    test::orders({1, 2, 3, 5, 8, 9, 16, 17, 33, 63, 64, 65, 81, 130, 150});

void check_factors(Index n, bool complex, bool relative_test) {
  test::TestHost host;
  PlainLu lu = {n, test_matrix(n, 7, complex)};
  aMatrix* const a = lu.a.on(host, n);
  const char* const message = lu.decompose(relative_test);
  Vector pivots = lu.pivots;
  double sign;
  ASSERT_STREQ((complex ? cludecomp : ludecomp)(a, pivots.data(), &sign, relative_test), message);
  if (message != nullptr) return;
  ASSERT_TRUE(lu.a.are_those_of(a));
  for (std::size_t k = 0; k < pivots.size(); ++k)
    ASSERT_EQ(pivots[k], lu.pivots[k] + (complex ? 1.0 : 0.0));
  for (const bool nothing : {false, true}) {
    Numbers b = {right_side(n, 8, nothing), complex ? right_side(n, 12, nothing) : Vector()};
    aMatrix* const x = b.on(host, n);
    ASSERT_EQ(complex ? clubacksub(a, pivots.data(), x) : lubacksub(a, pivots.data(), x), nullptr);
    lu.substitute(b);
    ASSERT_TRUE(b.are_those_of(x)) << nothing;
  }
}

TEST_P(LinsysKernels, FactorsAndSolutionsHaveThePlainBits) {
  for (const int n : kFactorOrders)
    for (const bool complex : {false, true})
      for (const bool relative_test : {false, true}) {
        SCOPED_TRACE(n);
        check_factors(n, complex, relative_test);
      }
}

// Every column of the inverse is what substitution makes of its unit vector.
void expect_plain_inverse(Index n, const Numbers& elements) {
  SCOPED_TRACE(n);
  test::TestHost host;
  PlainLu lu = {n, elements};
  const bool complex = !elements.im.empty();
  aMatrix* inverse = nullptr;
  ASSERT_EQ((complex ? cinv_core : inv_core)(host.context(), elements.on(host, n), &inverse, false),
            nullptr);
  ASSERT_EQ(lu.decompose(false), nullptr);
  for (Index j = 0; j < n; ++j) {
    Numbers b = {Vector(static_cast<std::size_t>(n)), {}};
    if (complex) b.im = b.re;
    b.re[static_cast<std::size_t>(j)] = 1.0;
    lu.substitute(b);
    ASSERT_TRUE(b.are_those_of(inverse, j * n)) << j;
  }
}

TEST_P(LinsysKernels, InverseHasThePlainBitsOfEveryColumn) {
  for (const int n : kFactorOrders)
    for (const bool complex : {false, true}) expect_plain_inverse(n, test_matrix(n, 13, complex));
  // An infinite multiplier: columns that start below it must not meet it.
  expect_plain_inverse(2, {{1e-300, 1e10, 1e-300, 1e300}, {}});
  expect_plain_inverse(3, {{1e-300, 1e10, 1, 1e-300, 1e300, 0, 1e-305, 0, 1e300}, {}});
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
Numbers overflowing(Index n, Index first, Growing growing, unsigned seed) {
  Numbers a = {random_vector(n * n, seed), random_vector(n * n, seed + 1)};
  for (Index j = 0; j < n; ++j)
    for (Index i = 0; i < n; ++i)
      for (Vector* part : {&a.re, &a.im}) {
        double& x = (*part)[static_cast<std::size_t>(i + j * n)];
        if (i < first || j < first)
          x *= i < first && j < first ? 1.0 : 0.0;
        else if (growing == Growing::multipliers)
          x *= i % 2 == 0 ? 1e-100 : 1e100;
        else if (growing == Growing::columns || j == n - 1)
          x = std::copysign(9e153, x);
      }
  return a;
}

TEST_P(LinsysKernels, ModuliOverflowAsInThePlainLoops) {
  int overflows = 0;
  for (const Index n : {5, 40, 70})
    for (const Index first : {Index{0}, Index{1}, n / 2, n - 3, n - 2})
      for (const Growing growing : {Growing::multipliers, Growing::columns, Growing::last_column})
        for (unsigned seed = 0; seed < 3; ++seed) {
          test::TestHost host;
          PlainLu lu = {n, overflowing(n, first, growing, seed)};
          aMatrix* const a = lu.a.on(host, n);
          const std::string expected = outcome([&] { return lu.decompose(false); });
          overflows += expected == "overflow";
          double sign;
          EXPECT_EQ(outcome([&] { return cludecomp(a, nullptr, &sign, false); }), expected)
              << n << " from " << first << ", " << static_cast<int>(growing) << ", " << seed;
        }
  EXPECT_GT(overflows, 16);
}

// What a guarded computation answers.
template <class Compute>
std::string answer(test::TestHost& host, Compute compute) {
  return calls::describe(guarded(host.context(), [&]() -> Anyval* {
    const char* const message = compute();
    return message == nullptr ? host.scalar(1) : call_error(host.context(), message);
  }));
}

// Several failures are due: the pivot of column `singular` is zero, the elements of one column are
// about to overflow, those of one row are infinite.
TEST_P(LinsysKernels, OfSeveralFailuresTheOneOfThePlainLoopsIsTold) {
  std::set<std::string> words;
  for (const Index n : {6, 70, 140})
    for (const bool complex : {false, true})
      for (const Index singular : {Index{2}, n / 2, n - 2, n})
        for (const Index large : {Index{1}, n / 2 + 1, n - 1, n})
          for (const Index infinite : {Index{1}, n / 2, n - 1, n}) {
            test::TestHost host;
            PlainLu lu = {n, {random_vector(n * n, 3), {}}};
            if (complex) lu.a.im = random_vector(n * n, 4);
            for (Vector* part : {&lu.a.re, &lu.a.im})
              for (Index i = 0; i < n && !part->empty(); ++i) {
                const auto at = [&](Index j) -> double& { return (*part)[std::size_t(i + j * n)]; };
                if (singular < n) at(singular) = at(0);
                if (large < n) at(large) = std::copysign(complex ? 1e306 : 1.7e308, at(large));
                if (infinite < n && i % 3 == 1) (*part)[std::size_t(infinite + i * n)] = HUGE_VAL;
              }
            aMatrix* const m = lu.a.on(host, n);
            const Anyval* const inverse = ::inv(host.context(), static_cast<Anyval*>(m));
            const std::string expected = answer(host, [&] {
              const char* const message = lu.decompose(true);
              for (Index j = 0; message == nullptr && j < n; ++j) {
                Numbers b = {Vector(std::size_t(n)), Vector(complex ? std::size_t(n) : 0)};
                b.re[std::size_t(j)] = 1.0;
                lu.substitute(b);
              }
              return message;
            });
            words.insert(expected);
            const bool both_have_values =
                inverse->kind == kMatrixKind && expected.starts_with("number");
            ASSERT_TRUE(both_have_values || calls::describe(inverse) == expected)
                << expected << ", not " << calls::describe(inverse) << " for " << n << ' '
                << singular << ' ' << large << ' ' << infinite;
          }
  EXPECT_GE(words.size(), 3u);
}

IN_EVERY_KERNEL_SET(LinsysKernels);

}  // namespace
}  // namespace matrix_pack
