// The reductions of the eigenproblem, the sweeps of its iterations and the loops behind them give
// the bits of their plain loops, in every kernel set.
#include "eigen/complex/plain.hpp"
#include "eigen/complex/qr_sweep.hpp"
#include "eigen/complex/unitary_reduction.hpp"
#include "eigen/general/elimination.hpp"
#include "eigen/general/plain.hpp"
#include "eigen/general/qr_sweep.hpp"
#include "eigen/shared/back_transformation_kernels.hpp"
#include "eigen/symmetric/plain.hpp"
#include "eigen/symmetric/tridiagonal.hpp"
#include "pack/numeric/complex_vector_kernels.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using EigenKernels = test::InEveryKernelSet;

using plain::ComplexSquare;
using plain::Row;
using plain::Square;
using test::random_dense;

// Orders around the widths of vectors, blocks of columns and rows, and windows; one whose columns
// are whole lines.
const std::vector<int> kReductionOrders =
    test::orders({1, 2, 3, 4, 5, 7, 8, 9, 12, 17, 31, 33, 64, 67, 129, 150, 200});

Square random_square(int n, unsigned seed) {
  return {n, random_dense(n, n, seed).a};
}

// Keeps the elements for which keep(i, j).
template <class Keep>
void cut(Square& a, Keep keep) {
  for (int j = 0; j < a.n; ++j)
    for (int i = 0; i < a.n; ++i)
      if (!keep(i, j)) a(i, j) = 0.0;
}

ComplexSquare random_complex(int n, unsigned seed) {
  ComplexSquare a(n);
  a.re = random_square(n, seed);
  a.im = random_square(n, seed + 1);
  return a;
}

Square symmetric(Square a) {
  for (int j = 0; j < a.n; ++j)
    for (int i = 0; i < j; ++i) a(i, j) = a(j, i);
  return a;
}

// Dense, and with rows that need no reflection.
TEST_P(EigenKernels, SymmetricReductionIsThatOfThePlainLoops) {
  for (const int n : kReductionOrders) {
    for (const bool sparse : {false, true}) {
      SCOPED_TRACE(n);
      Square a = symmetric(random_square(n, 1));
      if (sparse) cut(a, [](int i, int j) { return i == j || (i % 5 != 3 && j % 5 != 3); });
      for (const bool vectors : {false, true}) {
        Square expected = a;
        Row d(n), e(n), got_d(n), got_e(n);
        plain::tridiagonalize(expected, d, e, vectors);
        Square b = a;
        ASSERT_EQ((vectors ? tridiagonalize_with_vectors : tridiagonalize)(
                      n, {b.a.data(), n}, got_d.a.data(), got_e.a.data()),
                  nullptr);
        EXPECT_EQ(got_d.a, d.a);
        EXPECT_EQ(got_e.a, e.a);
        EXPECT_TRUE(!vectors || b.a == expected.a);
      }
    }
  }
}

// Dense and sparse: the multipliers that are zero leave gaps between the rows that take part.
TEST_P(EigenKernels, EliminationIsThatOfThePlainLoops) {
  for (const int n : kReductionOrders) {
    for (const bool sparse : {false, true}) {
      const int low = n / 7, igh = n - 1 - n / 9;
      SCOPED_TRACE(n);
      Square a = random_square(n, 3);
      if (sparse) cut(a, [](int i, int j) { return (i * 7 + j * 3) % 5 < 2; });
      cut(a, [=](int i, int j) { return i <= j || (i <= igh && j >= low); });
      Square expected = a;
      Row expected_pivots(n), pivots(n);
      plain::eliminate_to_hessenberg(expected, low, igh, expected_pivots);
      Square b = a;
      std::vector<std::ptrdiff_t> runs(static_cast<std::size_t>(n) + 1);
      const Balance range = {n, low, igh, 0, nullptr};
      eliminate_to_hessenberg({b.a.data(), n}, range, {pivots.a.data(), runs.data()});
      EXPECT_TRUE(b.a == expected.a);
      EXPECT_EQ(pivots.a, expected_pivots.a);
    }
  }
  // A multiplier that underflows still takes part: 0 times infinity.
  Square a = {3, {1, 1e300, 1e-300, 1, HUGE_VAL, 1, 1, 1, 1}};
  double pivots[3];
  std::ptrdiff_t runs[4];
  eliminate_to_hessenberg({a.a.data(), 3}, {3, 0, 2, 0, nullptr}, {pivots, runs});
  EXPECT_TRUE(a(2, 0) == 0.0 && std::isnan(a(2, 1)) && a(2, 2) == 1.0);
}

TEST_P(EigenKernels, UnitaryReductionIsThatOfThePlainLoops) {
  for (const int n : kReductionOrders) {
    for (const bool sparse : {false, true}) {
      const int low = n / 7, igh = n - 1 - n / 9;
      SCOPED_TRACE(n);
      ComplexSquare a = random_complex(n, 5);
      for (Square* part : {&a.re, &a.im}) {
        cut(*part, [=](int i, int j) { return i <= j || (i <= igh && j >= low); });
        // Columns that need no reflection, and some whose first element is zero.
        if (sparse)
          cut(*part, [](int i, int j) { return j % 4 == 0 ? i != j + 1 : j % 4 != 2 || i <= j; });
      }
      ComplexSquare expected = a, expected_q(n);
      expected_q.re = plain::identity(n);
      plain::reduce_unitary(expected, low, igh, expected_q);
      const auto hessenberg = [](int i, int j) { return i <= j + 1; };
      cut(expected.re, hessenberg);
      cut(expected.im, hessenberg);
      const Balance range = {n, low, igh, 0, nullptr};
      for (const bool vectors : {false, true}) {
        ComplexSquare b = a, q(n);
        q.re = plain::identity(n);
        ASSERT_EQ(vectors ? reduce_unitary_with_vectors(range, b.view(), q.view())
                          : reduce_unitary(range, b.view()),
                  nullptr);
        cut(b.re, hessenberg);
        cut(b.im, hessenberg);
        EXPECT_TRUE(b.re.a == expected.re.a && b.im.a == expected.im.a);
        if (!vectors) continue;
        EXPECT_TRUE(q.re.a == expected_q.re.a && q.im.a == expected_q.im.a);
      }
    }
  }
}

// Blocks of all lengths in matrices of all orders, alone and with what the vectors need; several
// sweeps, so that those of Z are batched, and those of what is behind the block.
TEST_P(EigenKernels, RealSweepsAreThoseOfThePlainLoops) {
  for (const int n : {3, 5, 9, 20, 40, 66, 67, 68, 100, 150}) {
    for (const bool vectors : {false, true}) {
      SCOPED_TRACE(n);
      Square h = random_square(n, 7);
      cut(h, [](int i, int j) { return i <= j + 1; });
      if (n > 9) h(n / 2, n / 2 - 1) = h(n / 2 + 1, n / 2) = 0.0;  // A reflector is left out.
      const int z_begin = n / 8, z_end = n - n / 9;
      const int ends[] = {n - 1, n - 1, std::max(n - 4, 2), std::max(2 * n / 3, 2),
                          std::max(n / 2, 2)};
      Square expected = h, expected_z = random_square(n, 8);
      for (const int en : ends) {
        const int l = en > 12 ? n / 10 : 0;
        const plain::Sweep sweep = {
            l,       en > 20 ? l + 3 : l,      en, vectors ? 0 : l, vectors ? n - 1 : en,
            z_begin, vectors ? z_end : z_begin};
        sweep.run(expected, expected_z, 0.5, -0.25, 0.125);
      }
      Square b = h, z = random_square(n, 8);
      const RealView view = {b.a.data(), n};
      const Balance range = {n, z_begin, z_end - 1, 0, nullptr};
      SweepWork work;
      ASSERT_TRUE(vectors ? work.open_with_vectors(range, view, {z.a.data(), n})
                          : work.open(n, view));
      for (const int en : ends) {
        const int l = en > 12 ? n / 10 : 0;
        if (en == ends[3]) work.apply();  // What is behind the block waits from here on.
        work.sweep(l, en, {en > 20 ? l + 3 : l, {0.5, -0.25, 0.125}});
      }
      work.finish();
      EXPECT_TRUE(b.a == expected.a);
      EXPECT_TRUE(z.a == expected_z.a);
    }
  }
}

TEST_P(EigenKernels, ComplexSweepsAreThoseOfThePlainLoops) {
  for (const int n : {2, 3, 5, 9, 20, 33, 34, 40, 66, 100, 150}) {
    for (const bool vectors : {false, true}) {
      SCOPED_TRACE(n);
      ComplexSquare h = random_complex(n, 9);
      cut(h.re, [](int i, int j) { return i <= j + 1; });
      cut(h.im, [](int i, int j) { return i <= j; });
      const int z_begin = n / 8, z_end = n - n / 9;
      const int ends[] = {n - 1, n - 1, std::max(n - 4, 1), std::max(2 * n / 3, 1),
                          std::max(n / 2, 1)};
      ComplexSquare expected = h, expected_z = random_complex(n, 11);
      for (const int en : ends) {
        const int l = en > 12 ? n / 10 : 0;
        const plain::ComplexSweep sweep = {
            l, en, vectors ? 0 : l, vectors ? n - 1 : en, z_begin, vectors ? z_end : z_begin};
        sweep.run(expected, expected_z);
      }
      ComplexSquare b = h, z = random_complex(n, 11);
      const Balance range = {n, z_begin, z_end - 1, 0, nullptr};
      ComplexSweepWork work;
      ASSERT_TRUE(vectors ? work.open_with_vectors(range, b.view(), z.view())
                          : work.open(n, b.view()));
      for (const int en : ends) {
        if (en == ends[3]) work.apply();  // What is behind the block waits from here on.
        work.sweep(en > 12 ? n / 10 : 0, en);
      }
      work.finish();
      EXPECT_TRUE(b.re.a == expected.re.a && b.im.a == expected.im.a);
      EXPECT_TRUE(z.re.a == expected_z.re.a && z.im.a == expected_z.im.a);
    }
  }
}

TEST_P(EigenKernels, CombinationsOfColumnsAreSumsInAscendingOrder) {
  constexpr int kRows = 50, kLeading = 53, kTerms = 30;
  const std::vector<double> z = random_dense(kLeading, kTerms, 13).a;
  const std::vector<double> x = random_dense(kTerms, 4, 14).a;
  for (const int rows : {1, 2, 7, 8, 23, 24, 31, kRows}) {
    for (const int cols : {1, 2, 3, 4}) {
      const std::ptrdiff_t count[] = {kTerms, 0, kTerms - 1, 17};
      std::vector<double> expected(std::size_t{kLeading} * 4);
      for (int j = 0; j < cols; ++j)
        for (int i = 0; i < rows; ++i)
          for (int k = 0; k < count[j]; ++k)
            expected[std::size_t(j * kLeading + i)] +=
                z[std::size_t(k * kLeading + i)] * x[std::size_t(j * kTerms + k)];
      std::vector<double> out(expected.size());
      back_transformation_kernels().combine(rows, {z.data(), kLeading}, cols, {x.data(), kTerms},
                                            count, {out.data(), kLeading});
      EXPECT_EQ(out, expected) << rows << " " << cols;
    }
  }
}

TEST_P(EigenKernels, ComplexVectorsGoElementByElementAndSumInTheOneOrder) {
  for (const int n : {0, 1, 7, 8, 9, 31, 64, 129}) {
    const std::vector<double> ur = random_dense(n, 1, 15).a, ui = random_dense(n, 1, 16).a;
    const std::vector<double> xr = random_dense(n, 1, 17).a, xi = random_dense(n, 1, 18).a;
    const Complex f = {0.3, -0.7};
    std::vector<double> re = xr, im = xi;
    for (std::size_t k = 0; k < re.size(); ++k) {
      re[k] -= ur[k] * f.re - ui[k] * f.im;
      im[k] -= ui[k] * f.re + ur[k] * f.im;
    }
    const double squares = plain::sum(n, [&](std::ptrdiff_t k) {
      const auto i = static_cast<std::size_t>(k);
      return xr[i] * xr[i] + xi[i] * xi[i];
    });
    EXPECT_EQ(complex_vector_kernels().sum_squares(n, {xr.data(), xi.data()}), squares);
    std::vector<double> got_re = xr, got_im = xi;
    complex_vector_kernels().subtract_multiple(n, f, {ur.data(), ui.data()},
                                               {got_re.data(), got_im.data()});
    EXPECT_EQ(got_re, re);
    EXPECT_EQ(got_im, im);
  }
}

IN_EVERY_KERNEL_SET(EigenKernels);

}  // namespace
}  // namespace matrix_pack
