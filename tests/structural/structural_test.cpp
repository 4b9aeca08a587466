// Queries, building and rearranging.
#include "structural/structural.hpp"

#include <cmath>

#include "host/arguments/values.hpp"
#include "pack/exports.hpp"
#include "pack/numeric/transpose_kernels.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;

class Structural : public InHost {
 protected:
  Anyval* zero = host.scalar(0);
};

TEST_F(Structural, EveryMessageMarkAndArgument) {
  Anyval* const number = host.scalar(3);
  Anyval* const text = host.string("text");
  Anyval* const row = host.matrix({{1, 2, 3, 4}});
  Anyval* const wide = host.matrix({{1, 2, 3}, {4, 5, 6}});
  Anyval* const nested = host.nested(1, 2, {number, row});

  for (const auto extent : {rows, cols}) expect_error(extent(c, text), "must be array", 0, 1, text);
  for (const auto function : {max, min, reverse, transpose, tr})
    expect_error(function(c, number), "must be array", 0, 1);
  for (Anyval* const wrong : {number, row}) {
    expect_error(last(c, wrong, zero), "must be vector", 0, 1);
    expect_error(diag(c, wrong), "must be vector", 0, 1);
  }
  expect_error(length(c, number), "must be vector", 0, 1);
  expect_error(length(c, row), "must be vector", 1, 0);
  for (const auto extreme : {max, min}) expect_error(extreme(c, nested), "may not be nested", 0, 1);
  expect_error(identity(c, row), "non-scalar value", 0, 1);
  for (const StdComplex wrong : {StdComplex(2.5), StdComplex(kNan), StdComplex(2, 1)})
    expect_error(identity(c, host.scalar(wrong.real(), wrong.imag())), "must be integer", 0, 1);
  for (const double wrong : {0.0, -2.0, -200000.0})
    expect_error(identity(c, host.scalar(wrong)), "domain error", 0, 1);
  expect_error(identity(c, host.scalar(100001)), "size too large", 0, 1);
  for (const auto join : {augment, stack}) {
    expect_error(join(c, number, number), "must be array", 0, 1);
    expect_error(join(c, row, number), "must be array", 0, 2);
    expect_error(join(c, row, wide), "array size mismatch", 0, 2);
  }
  expect_error(tr(c, wide), "must be square", 0, 1);
}

TEST_F(Structural, Extents) {
  expect_number(rows(c, host.scalar(5)), 0);
  expect_number(cols(c, host.scalar(5)), 0);
  expect_number(rows(c, host.lean(2, 7)), 2);
  expect_number(cols(c, host.lean(2, 7)), 7);
  aMatrix* v = host.column({1, 2, 3, 4});
  expect_number(last(c, v, host.scalar(1)), 4);
  expect_number(last(c, v, host.scalar(0.5, 9)), 3.5);
  expect_number(length(c, v), 4);
  expect_number(length(c, host.matrix({{7}})), 1);
}

TEST_F(Structural, ExtremesAreTakenPartByPart) {
  aMatrix* m = host.complex_matrix({{{1, 5}}, {{3, 2}}});
  expect_number(max(c, m), 3, 5);
  expect_number(min(c, m), 1, 2);
  expect_number(max(c, host.imaginary({{-4, -1}})), 0, -1);
  expect_number(min(c, host.lean(2, 2)), 0);
}

// The plain loop: elements by rows. A NaN replaces every maximum, and nothing a minimum that is
// one.
double plain_extreme(const aMatrix* m, bool want_max) {
  double candidate = re(m, 0, 0);
  for (int i = 0; i < m->rows; ++i)
    for (int j = 0; j < m->cols; ++j) {
      const double x = re(m, i, j);
      if (want_max ? !(candidate >= x) : candidate > x) candidate = x;
    }
  return candidate;
}

TEST_F(Structural, ExtremesHaveTheBitsOfThePlainRowOrder) {
  const double values[] = {0.0, -0.0, 1.0, -1.0, kNan, kInf, -kInf};
  for (int trial = 0; trial < 400; ++trial) {
    arguments::Random random = {static_cast<std::uint64_t>(trial)};
    // Mostly zeros of both signs in some trials, NaNs in others.
    const int kinds = trial % 3 == 0 ? 2 : 7, rows = trial % 10 == 0 ? 300 : 1 + random.below(6);
    aMatrix* const m = host.lean(rows, 1 + random.below(6));
    m->re = arguments::new_array(m->byte_size / 8);
    for (unsigned k = 0; k < m->byte_size / 8; ++k) m->re[k] = values[random.below(kinds)];
    for (const bool want_max : {true, false}) {
      const double got = real_number((want_max ? max : min)(c, m));
      const double expected = plain_extreme(m, want_max);
      ASSERT_TRUE(std::isnan(got) ? std::isnan(expected)
                                  : got == expected && std::signbit(got) == std::signbit(expected))
          << "trial " << trial << (want_max ? " max " : " min ") << got << " not " << expected;
    }
  }
}

TEST_F(Structural, Identity) {
  expect_matrix(identity(c, host.scalar(3)), {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  expect_matrix(::identity(c, 2), {{1, 0}, {0, 1}});
  EXPECT_EQ(as_result_matrix(::identity(c, 0))->rows, 0);
  expect_out_of_memory(::identity(c, -2));
  expect_out_of_memory(identity(c, host.scalar(100000)));
}

TEST_F(Structural, Diag) {
  expect_matrix(diag(c, host.column({1, 2})), {{1, 0}, {0, 2}});
  expect_complex_matrix(diag(c, host.complex_matrix({{{1, 2}}, {{0, 3}}})),
                        {{{1, 2}, 0}, {0, {0, 3}}});
  expect_matrix(diag(c, host.lean(2, 1)), {{0, 0}, {0, 0}});
}

TEST_F(Structural, AugmentAndStack) {
  aMatrix* a = host.matrix({{1}, {2}});
  aMatrix* b = host.complex_matrix({{3, {4, 1}}, {5, 6}});
  expect_matrix(augment(c, a, host.matrix({{3, 4}, {5, 6}})), {{1, 3, 4}, {2, 5, 6}});
  expect_complex_matrix(augment(c, a, b), {{1, 3, {4, 1}}, {2, 5, 6}});
  expect_matrix(stack(c, a, host.column({9})), {{1}, {2}, {9}});
  // Two columns, so that a leading dimension taken from the wrong array shows.
  expect_complex_matrix(stack(c, host.imaginary({{7, 8}}), b),
                        {{{0, 7}, {0, 8}}, {3, {4, 1}}, {5, 6}});
  expect_matrix(stack(c, host.lean(1, 2), host.lean(1, 2)), {{0, 0}, {0, 0}});
  // A zero imaginary array counts.
  aMatrix* joined = as_result_matrix(augment(c, a, host.complex_matrix({{1}, {1}})));
  EXPECT_NE(joined->im, nullptr);
  // A host's records with extents that no array has, and with very many columns of nothing.
  aMatrix* const lying = host.matrix({{1, 2, 3}});
  lying->cols = -1;
  expect_error(augment(c, lying, host.matrix({{1, 2, 3}})), "invalid dimension", 0, 1);
  expect_error(augment(c, host.matrix({{1, 2, 3}}), lying), "invalid dimension", 0, 2);
  lying->rows = -1;
  lying->cols = 1;
  expect_error(stack(c, a, lying), "invalid dimension", 0, 2);
  aMatrix* const nothing = host.lean(0, 2147483647);
  EXPECT_EQ(as_result_matrix(stack(c, nothing, nothing))->cols, 2147483647);
}

TEST_F(Structural, Reverse) {
  aMatrix* row = host.matrix({{1, 2, 3}});
  EXPECT_EQ(reverse(c, row), row);
  EXPECT_EQ(reverse(c, host.lean(3, 1)), nullptr);
  expect_matrix(reverse(c, host.matrix(2, 0, {})), {{0}, {0}});
  expect_matrix(reverse(c, host.matrix({{1, 4}, {2, 5}, {3, 6}})), {{3, 6}, {2, 5}, {1, 4}});
  aMatrix* imaginary = as_result_matrix(reverse(c, host.imaginary({{1}, {2}})));
  EXPECT_EQ(imaginary->re, nullptr);
  expect_complex_matrix(imaginary, {{{0, 2}}, {{0, 1}}});
}

TEST_F(Structural, TransposeAndTrace) {
  expect_complex_matrix(transpose(c, host.complex_matrix({{1, {2, 3}, 4}, {5, 6, {7, -8}}})),
                        {{1, 5}, {{2, 3}, 6}, {4, {7, -8}}});
  expect_number(tr(c, host.complex_matrix({{{1, 2}, 9}, {9, {3, -5}}})), 4, -3);
  expect_number(tr(c, host.lean(3, 3)), 0);
}

TEST_F(Structural, NestedElementsMoveWhole) {
  aMatrix* nested = host.nested(1, 2, {host.matrix({{1, 2}}), host.string("b")});
  for (Anyval* moved :
       {augment(c, nested, nested), stack(c, nested, nested), transpose(c, nested)}) {
    EXPECT_TRUE(contains_ptrs(as_result_matrix(moved)));
  }
}

using TransposeKernels = InEveryKernelSet;

TEST_P(TransposeKernels, MoveEveryElement) {
  for (const auto& [r, c] : {std::pair{1, 40}, {17, 33}, {16, 16}, {50, 3}}) {
    TestHost host;
    aMatrix* a = host.matrix(r, c, random_dense(r, c, 1).a);
    aMatrix* t = as_result_matrix(transpose(host.context(), a));
    ASSERT_EQ(t->rows, c);
    EXPECT_EQ(re_parts(t), transposed({r, c, re_parts(a)}).a);
  }
}

IN_EVERY_KERNEL_SET(TransposeKernels);

}  // namespace
}  // namespace matrix_pack
