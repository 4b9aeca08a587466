// Queries, building and rearranging.
#include "structural/structural.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "pack/exports.hpp"
#include "pack/numeric/transpose_kernels.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/test_host.hpp"

namespace matrix_pack {
namespace {

using namespace test;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

class Structural : public ::testing::Test {
 protected:
  TestHost host;
  EfiCallContext* context = host.context();
  Anyval* zero = host.scalar(0);
};

TEST_F(Structural, EveryMessageMarkAndArgument) {
  Anyval* const number = host.scalar(3);
  Anyval* const text = host.string("text");
  Anyval* const row = host.matrix({{1, 2, 3, 4}});
  Anyval* const wide = host.matrix({{1, 2, 3}, {4, 5, 6}});
  Anyval* const nested = host.nested(1, 2, {number, row});

  expect_error(rows(context, text), "must be array", 0, 1, text);
  expect_error(cols(context, text), "must be array", 0, 1, text);
  expect_error(last(context, number, zero), "must be vector", 0, 1);
  expect_error(last(context, row, zero), "must be vector", 0, 1);
  expect_error(length(context, number), "must be vector", 0, 1);
  expect_error(length(context, row), "must be vector", 1, 0);
  for (const auto extreme : {max, min}) {
    expect_error(extreme(context, number), "must be array", 0, 1);
    expect_error(extreme(context, nested), "may not be nested", 0, 1);
  }
  expect_error(identity(context, row), "non-scalar value", 0, 1);
  for (const double wrong : {2.5, kNaN})
    expect_error(identity(context, host.scalar(wrong)), "must be integer", 0, 1);
  expect_error(identity(context, host.scalar(2, 1)), "must be integer", 0, 1);
  for (const double wrong : {0.0, -2.0, -200000.0})
    expect_error(identity(context, host.scalar(wrong)), "domain error", 0, 1);
  expect_error(identity(context, host.scalar(100001)), "size too large", 0, 1);
  expect_error(diag(context, number), "must be vector", 0, 1);
  expect_error(diag(context, row), "must be vector", 0, 1);
  for (const auto join : {augment, stack}) {
    expect_error(join(context, number, number), "must be array", 0, 1);
    expect_error(join(context, row, number), "must be array", 0, 2);
  }
  expect_error(augment(context, row, wide), "array size mismatch", 0, 2);
  expect_error(stack(context, row, wide), "array size mismatch", 0, 2);
  expect_error(reverse(context, number), "must be array", 0, 1);
  expect_error(transpose(context, text), "must be array", 0, 1);
  expect_error(tr(context, number), "must be array", 0, 1);
  expect_error(tr(context, wide), "must be square", 0, 1);
}

TEST_F(Structural, Extents) {
  expect_number(rows(context, host.scalar(5)), 0);
  expect_number(cols(context, host.scalar(5)), 0);
  expect_number(rows(context, host.lean(2, 7)), 2);
  expect_number(cols(context, host.lean(2, 7)), 7);
  aMatrix* v = host.column({1, 2, 3, 4});
  expect_number(last(context, v, host.scalar(1)), 4);
  expect_number(last(context, v, host.scalar(0.5, 9)), 3.5);
  expect_number(length(context, v), 4);
  expect_number(length(context, host.matrix({{7}})), 1);
}

TEST_F(Structural, ExtremesAreTakenPartByPart) {
  aMatrix* m = host.complex_matrix({{{1, 5}}, {{3, 2}}});
  expect_number(max(context, m), 3, 5);
  expect_number(min(context, m), 1, 2);
  expect_number(max(context, host.imaginary({{-4, -1}})), 0, -1);
  expect_number(min(context, host.lean(2, 2)), 0);
}

TEST_F(Structural, MaxTakesNaNsAndMinDoesNot) {
  expect_number(max(context, host.column({2, kNaN, 1})), 1);
  expect_number(min(context, host.column({2, kNaN, 1})), 1);
  EXPECT_TRUE(std::isnan(real_number(max(context, host.column({2, 1, kNaN})))));
  EXPECT_TRUE(std::isnan(real_number(min(context, host.column({kNaN, -5, 1})))));
  // By rows: the NaN is followed by 3 and 4, not by 9.
  expect_number(max(context, host.matrix({{9, kNaN}, {3, 4}})), 4);
  expect_number(min(context, host.matrix({{kInf, kNaN}, {kNaN, kNaN}})), kInf);
}

// The plain loop: elements by rows, the first one twice.
double plain_extreme(const aMatrix* m, bool want_max) {
  double candidate = re(m, 0, 0);
  for (int i = 0; i < m->rows; ++i) {
    for (int j = 0; j < m->cols; ++j) {
      const double x = re(m, i, j);
      const bool replace = want_max ? !(candidate >= x) : candidate > x;
      if (replace) candidate = x;
    }
  }
  return candidate;
}

TEST_F(Structural, ExtremesHaveTheBitsOfThePlainRowOrder) {
  std::mt19937 engine(7);
  const double values[] = {0.0, -0.0, 1.0, -1.0, kNaN, kInf, -kInf};
  for (int trial = 0; trial < 400; ++trial) {
    const int r = trial % 10 == 0 ? 300 : 1 + static_cast<int>(engine() % 6);
    const int c = 1 + static_cast<int>(engine() % 6);
    // Mostly zeros of both signs in some trials, NaNs in others.
    const unsigned kinds = trial % 3 == 0 ? 2 : 7;
    std::vector<double> elements(static_cast<std::size_t>(r * c));
    for (double& x : elements) x = values[engine() % kinds];
    aMatrix* m = host.matrix(r, c, elements);
    for (const bool want_max : {true, false}) {
      const double got = real_number((want_max ? max : min)(context, m));
      const double expected = plain_extreme(m, want_max);
      ASSERT_TRUE(std::isnan(got) ? std::isnan(expected)
                                  : got == expected && std::signbit(got) == std::signbit(expected))
          << "trial " << trial << (want_max ? " max " : " min ") << got << " not " << expected;
    }
  }
}

TEST_F(Structural, Identity) {
  expect_matrix(identity(context, host.scalar(3)), {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  expect_matrix(::identity(context, 2), {{1, 0}, {0, 1}});
  EXPECT_EQ(as_result_matrix(::identity(context, 0))->rows, 0);
  expect_out_of_memory(::identity(context, -2));
  expect_out_of_memory(identity(context, host.scalar(100000)));
}

TEST_F(Structural, Diag) {
  expect_matrix(diag(context, host.column({1, 2})), {{1, 0}, {0, 2}});
  expect_complex_matrix(diag(context, host.complex_matrix({{{1, 2}}, {{0, 3}}})),
                        {{{1, 2}, 0}, {0, {0, 3}}});
  expect_matrix(diag(context, host.lean(2, 1)), {{0, 0}, {0, 0}});
}

TEST_F(Structural, AugmentAndStack) {
  aMatrix* a = host.matrix({{1}, {2}});
  aMatrix* b = host.complex_matrix({{3, {4, 1}}, {5, 6}});
  expect_matrix(augment(context, a, host.matrix({{3, 4}, {5, 6}})), {{1, 3, 4}, {2, 5, 6}});
  expect_complex_matrix(augment(context, a, b), {{1, 3, {4, 1}}, {2, 5, 6}});
  expect_matrix(stack(context, a, host.column({9})), {{1}, {2}, {9}});
  // Two columns, so that a leading dimension taken from the wrong array shows.
  expect_complex_matrix(stack(context, host.imaginary({{7, 8}}), b),
                        {{{0, 7}, {0, 8}}, {3, {4, 1}}, {5, 6}});
  expect_matrix(stack(context, host.lean(1, 2), host.lean(1, 2)), {{0, 0}, {0, 0}});
  // A zero imaginary array counts.
  aMatrix* joined = as_result_matrix(augment(context, a, host.complex_matrix({{1}, {1}})));
  EXPECT_NE(joined->im, nullptr);
}

TEST_F(Structural, Reverse) {
  aMatrix* row = host.matrix({{1, 2, 3}});
  EXPECT_EQ(reverse(context, row), row);
  EXPECT_EQ(reverse(context, host.lean(3, 1)), nullptr);
  expect_matrix(reverse(context, host.matrix(2, 0, {})), {{0}, {0}});
  expect_matrix(reverse(context, host.matrix({{1, 4}, {2, 5}, {3, 6}})), {{3, 6}, {2, 5}, {1, 4}});
  aMatrix* imaginary = as_result_matrix(reverse(context, host.imaginary({{1}, {2}})));
  EXPECT_EQ(imaginary->re, nullptr);
  expect_complex_matrix(imaginary, {{{0, 2}}, {{0, 1}}});
}

TEST_F(Structural, TransposeAndTrace) {
  expect_complex_matrix(transpose(context, host.complex_matrix({{1, {2, 3}, 4}, {5, 6, {7, -8}}})),
                        {{1, 5}, {{2, 3}, 6}, {4, {7, -8}}});
  testing::for_each_kernel_set([&] {
    for (const auto& [r, c] : {std::pair{1, 40}, {17, 33}, {16, 16}, {50, 3}}) {
      std::vector<double> elements(static_cast<std::size_t>(r * c));
      for (std::size_t k = 0; k < elements.size(); ++k) elements[k] = static_cast<double>(k);
      aMatrix* a = host.matrix(r, c, elements);
      aMatrix* t = as_result_matrix(transpose(context, a));
      ASSERT_EQ(t->rows, c);
      for (int i = 0; i < r; ++i)
        for (int j = 0; j < c; ++j) ASSERT_EQ(re(t, j, i), re(a, i, j));
    }
  });
  expect_number(tr(context, host.complex_matrix({{{1, 2}, 9}, {9, {3, -5}}})), 4, -3);
  expect_number(tr(context, host.lean(3, 3)), 0);
}

TEST_F(Structural, NestedElementsMoveWhole) {
  aMatrix* nested = host.nested(1, 2, {host.matrix({{1, 2}}), host.string("b")});
  for (Anyval* moved : {augment(context, nested, nested), stack(context, nested, nested),
                        transpose(context, nested)}) {
    EXPECT_TRUE(contains_ptrs(as_result_matrix(moved)));
  }
}

TEST_F(Structural, EveryAllocationMayFail) {
  aMatrix* a = host.complex_matrix({{1, {2, 3}}, {4, 5}});
  aMatrix* v = host.complex_matrix({{1}, {{0, 2}}});
  Anyval* three = host.scalar(3);
  const Snapshot argument(a);
  const std::function<Anyval*()> calls[] = {
      [&] { return identity(context, three); }, [&] { return diag(context, v); },
      [&] { return augment(context, a, a); },   [&] { return stack(context, a, a); },
      [&] { return reverse(context, a); },      [&] { return transpose(context, a); },
      [&] { return max(context, a); },          [&] { return tr(context, a); },
      [&] { return length(context, v); },       [&] { return length(context, a); },
  };
  for (const auto& call : calls) {
    with_failing_allocations(call, [](Anyval* value, int) { expect_out_of_memory(value); });
    EXPECT_EQ(host.evaluator().depth(), 0u);
  }
  EXPECT_TRUE(argument.unchanged());
}

}  // namespace
}  // namespace matrix_pack
