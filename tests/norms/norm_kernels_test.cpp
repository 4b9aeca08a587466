// The kernels of the norms give the bits of their plain loops, in every kernel set.
#include "norms/norm_plain.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using NormKernels = test::InEveryKernelSet;

using namespace test;

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

TEST_P(NormKernels, SumsOfMagnitudesAreTakenInOrder) {
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
}

TEST_P(NormKernels, TheLargestSumIsNoNaN) {
  for (int n = 0; n <= 40; ++n)
    for (int at = 0; at < n; ++at) {
      Sums sums(static_cast<std::size_t>(n), std::nan(""));
      EXPECT_EQ(norm_kernels().largest_sum(0.0, n, sums.data()), 0.0);
      sums[static_cast<std::size_t>(at)] = 2.0;
      EXPECT_EQ(norm_kernels().largest_sum(1.0, n, sums.data()), 2.0) << n << ' ' << at;
      EXPECT_EQ(norm_kernels().largest_sum(3.0, n, sums.data()), 3.0) << n << ' ' << at;
    }
}

TEST_P(NormKernels, GramMatrixIsSummedInOrder) {
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
}

IN_EVERY_KERNEL_SET(NormKernels);

}  // namespace
}  // namespace matrix_pack
