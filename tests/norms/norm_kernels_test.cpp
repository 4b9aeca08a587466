// The kernels of the norms and of the Hermitian tridiagonalisation give the bits of their plain
// loops, in every kernel set.
#include <gtest/gtest.h>

#include "eigen/hermitian/plain.hpp"
#include "eigen/hermitian/tridiagonal_kernels.hpp"
#include "norms/norm_plain.hpp"
#include "pack/numeric/complex_vector_kernels.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using Index = std::ptrdiff_t;

// Parts with zeros in either and in both, and a few rows more than are used.
struct Parts {
  explicit Parts(int n) : re(random_dense(n + 3, n, 1)), im(random_dense(n + 3, n, 2)) {
    for (std::size_t k = 0; k < re.a.size(); ++k) {
      if (k % 5 == 1) re.a[k] = 0.0;
      if (k % 7 == 1) im.a[k] = 0.0;
    }
  }
  ConstComplexView real() const { return {re.a.data() + 1, nullptr, re.rows}; }
  ConstComplexView complex() const { return {re.a.data() + 1, im.a.data() + 1, re.rows}; }
  Dense re, im;
};

using Sums = std::vector<double>;

TEST(NormKernels, SumsOfMagnitudesAreTakenInOrder) {
  testing::for_each_kernel_set([] {
    for (const int n : {1, 2, 3, 5, 7, 8, 9, 16, 33, 65, 127, 128}) {
      const Parts parts(n);
      for (const ConstComplexView& a : {parts.real(), parts.complex()}) {
        Sums sums(128), expected(128);
        norm_kernels().row_sums(n, n, a, sums.data());
        plain::row_sums(n, n, a, expected.data());
        EXPECT_EQ(sums, expected) << "rows " << n;
        const Index cols = std::min<Index>(n, kSumColumns);
        norm_kernels().column_sums(n, cols, a, sums.data());
        plain::column_sums(n, cols, a, expected.data());
        EXPECT_EQ(sums, expected) << "columns " << n;
      }
    }
  });
}

TEST(NormKernels, GramMatrixIsSummedInOrder) {
  testing::for_each_kernel_set([] {
    for (const int n : {1, 2, 3, 8, 15, 16, 17, 33, 50}) {
      const Parts parts(n);
      const ConstComplexView a = parts.complex();
      Dense re(n, n), im(n, n), expected_re(n, n), expected_im(n, n);
      Sums work(static_cast<std::size_t>(kGramWork * n));
      norm_kernels().gram(n, a, re.a.data(), im.a.data(), work.data());
      plain::gram(n, a, expected_re.a.data(), expected_im.a.data());
      EXPECT_EQ(re.a, expected_re.a) << n;
      EXPECT_EQ(im.a, expected_im.a) << n;
    }
  });
}

struct Complexes {
  Complexes(int rows, int cols, unsigned seed)
      : re(random_dense(rows, cols, seed)), im(random_dense(rows, cols, seed + 1)) {}
  ComplexView array() { return {re.a.data(), im.a.data(), re.rows}; }
  ComplexView vector() { return {re.a.data(), im.a.data()}; }
  Dense re, im;
};

TEST(HermitianKernels, OnePassUpdatesAndMultiplies) {
  testing::for_each_kernel_set([] {
    for (const int n : {1, 2, 3, 4, 9, 10, 11, 17, 18, 40})
      for (const auto& [update, multiply] : {std::pair{true, true}, {true, false}, {false, true}}) {
        const ComplexView absent = {nullptr, nullptr};
        Complexes a(n + 2, n, 1), v(n, 1, 3), q(n, 1, 5), x(n, 1, 7), w(n, 1, 9);
        Complexes expected_a = a;
        Complexes expected_w = w;
        if (update) plain::update(n, expected_a.array(), v.vector(), q.vector());
        if (multiply) plain::multiply(n, expected_a.array(), x.vector(), expected_w.vector());
        hermitian_kernels().update_multiply(
            n, a.array(), update ? v.vector() : absent, update ? q.vector() : absent,
            multiply ? x.vector() : absent, multiply ? w.vector() : absent);
        EXPECT_EQ(a.re.a, expected_a.re.a) << n;
        EXPECT_EQ(a.im.a, expected_a.im.a) << n;
        EXPECT_EQ(w.re.a, expected_w.re.a) << n;
        EXPECT_EQ(w.im.a, expected_w.im.a) << n;
      }
  });
}

TEST(HermitianKernels, SumsHaveTheOneOrder) {
  testing::for_each_kernel_set([] {
    for (const int n : {1, 7, 8, 9, 31, 100}) {
      Complexes z(n, 1, 4);
      const ComplexView x = z.vector();
      EXPECT_EQ(complex_vector_kernels().sum_magnitudes(n, x),
                plain::sum(n, [&](Index k) { return std::fabs(x.re[k]) + std::fabs(x.im[k]); }));
      EXPECT_EQ(complex_vector_kernels().sum_squares(n, x),
                plain::sum(n, [&](Index k) { return x.re[k] * x.re[k] + x.im[k] * x.im[k]; }));
    }
  });
}

}  // namespace
}  // namespace matrix_pack
