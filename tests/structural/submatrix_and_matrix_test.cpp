// submatrix and matrix.
#include <gtest/gtest.h>

#include <limits>

#include "structural/structural.hpp"
#include "tests/support/test_host.hpp"

namespace matrix_pack {
namespace {

using namespace test;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

class Blocks : public ::testing::Test {
 protected:
  Anyval* block(Anyval* a, Complex ir, Complex jr, Complex ic, Complex jc, double origin = 0) {
    return submatrix(context, a, number_of(ir), number_of(jr), number_of(ic), number_of(jc),
                     host.scalar(origin));
  }
  Anyval* number_of(Complex z) { return host.scalar(z.real(), z.imag()); }

  TestHost host;
  EfiCallContext* context = host.context();
  aMatrix* square = host.matrix({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
};

TEST_F(Blocks, SubmatrixTakesRowsAndColumnsInEitherOrder) {
  expect_matrix(block(square, 0, 1, 1, 2), {{2, 3}, {5, 6}});
  expect_matrix(block(square, 2, 0, 0, 2), {{7, 8, 9}, {4, 5, 6}, {1, 2, 3}});
  expect_matrix(block(square, 2, 1, 1, 0), {{8, 7}, {5, 4}});
  expect_matrix(block(square, 1.9, 1.2, 0, 0), {{4}});
  // From ORIGIN 1, also one that is negative or no integer.
  expect_matrix(block(square, 3, 3, 1, 3, 1), {{7, 8, 9}});
  expect_matrix(block(square, -2, 0, -2, -2, -2), {{1}, {4}, {7}});
  expect_matrix(block(square, 1.5, 2.5, 1.5, 1.5, 0.5), {{5}, {8}});

  aMatrix* complex = host.complex_matrix({{1, {2, 7}}, {3, 4}});
  aMatrix* real_corner = as_result_matrix(block(complex, 1, 1, 0, 1));
  expect_complex_matrix(real_corner, {{3, 4}});
  EXPECT_NE(real_corner->im, nullptr);
  EXPECT_EQ(as_result_matrix(block(square, 0, 0, 0, 0))->im, nullptr);
  aMatrix* imaginary = as_result_matrix(block(host.imaginary({{1, 2}}), 0, 0, 1, 1));
  EXPECT_EQ(imaginary->re, nullptr);
  expect_complex_matrix(imaginary, {{{0, 2}}});
  expect_matrix(block(host.lean(2, 2), 0, 1, 1, 1), {{0}, {0}});
}

TEST_F(Blocks, SubmatrixMessages) {
  Anyval* const text = host.string("1");
  Anyval* const one = host.scalar(1);
  expect_error(submatrix(context, one, text, text, text, text, one), "must be array", 0, 1);
  Anyval* bounds[] = {one, one, one, one};
  for (int k = 3; k >= 0; --k) {
    bounds[k] = text;
    expect_error(submatrix(context, square, bounds[0], bounds[1], bounds[2], bounds[3], one),
                 "non-scalar value", 0, k + 2);
  }
  const struct {
    Complex bound;
    double origin;
    const char* message;
  } cases[] = {{{1, 2}, 0, "must be real"},
               {2147483648.0, 0, "integer too large"},
               {2147483647.0, 0, "invalid dimension"},
               {kInf, 0, "integer too large"},
               {-kInf, 0, "invalid dimension"},
               {kNaN, 0, "floating point error"},
               {3, 0, "invalid dimension"},
               {-1, 0, "invalid dimension"},
               {0, 1, "invalid dimension"},
               {4, 1, "invalid dimension"}};
  for (const auto& c : cases) {
    for (int k = 0; k < 4; ++k) {
      Complex b[4] = {1, 1, 1, 1};
      b[k] = c.bound;
      // A fault is tied to the call.
      const bool fault = std::string(c.message) == "floating point error";
      expect_error(block(square, b[0], b[1], b[2], b[3], c.origin), c.message, 0,
                   fault ? 0 : k + 2);
    }
  }
  // With an ORIGIN that is no integer a bound can pass the first test and fail the second.
  expect_error(block(square, 2.1, 2.4, 0, 0, -0.6), "upper index out of bounds", 0, 0);
}

TEST_F(Blocks, SubmatrixOfANestedElementIsItsValue) {
  aMatrix* inner = host.matrix({{5, 6}});
  aMatrix* nested = host.nested(2, 2, {host.scalar(3, 4), inner, host.string("text"), inner});
  const std::uint32_t flags = inner->flags;

  expect_complex_matrix(block(nested, 0, 0, 0, 0), {{{3, 4}}});
  aMatrix* text = as_result_matrix(block(nested, 0, 0, 1, 1));
  EXPECT_EQ(text->flags & kHoldsNested, kHoldsNested);
  EXPECT_TRUE(contains_ptrs(text));
  EXPECT_EQ(inner->flags, flags);
  aMatrix* array = as_result_matrix(block(nested, 1, 1, 0, 0));
  EXPECT_EQ(array->flags & kHoldsNested, kHoldsNested);
  EXPECT_EQ(inner->flags, flags | kIsNestedValue);

  // The position is not moved by ORIGIN: (1, 1) names the first element and looks at the last.
  aMatrix* mixed = host.nested(2, 2, {host.scalar(1), inner, inner, host.scalar(3, 4)});
  expect_complex_matrix(block(mixed, 1, 1, 1, 1, 1), {{{3, 4}}});
  // (2, 2) would look beside the matrix: the element asked for is copied as it is.
  aMatrix* corner = as_result_matrix(block(mixed, 2, 2, 2, 2, 1));
  EXPECT_EQ(efi::nested_value(re(corner, 0, 0)), efi::nested_value(re(mixed, 1, 1)));
  // A block of several elements keeps them nested.
  EXPECT_TRUE(contains_ptrs(as_result_matrix(block(nested, 0, 1, 1, 1))));
}

TEST_F(Blocks, MatrixCountsFromZeroAndCallsTheCornerTwice) {
  std::vector<std::pair<double, double>> calls;
  Anyval* sum = host.function([&](double i, double j) {
    calls.emplace_back(i, j);
    return host.scalar(i + 10 * j);
  });
  aMatrix* m = as_result_matrix(matrix(context, host.scalar(2), host.scalar(3), sum));
  expect_matrix(m, {{0, 10, 20}, {1, 11, 21}});
  EXPECT_EQ(m->im, nullptr);
  const std::vector<std::pair<double, double>> order = {{0, 0}, {0, 0}, {0, 1}, {0, 2},
                                                        {1, 0}, {1, 1}, {1, 2}};
  EXPECT_EQ(calls, order);

  Anyval* complex = host.function([&](double i, double j) { return host.scalar(1, i * j); });
  expect_complex_matrix(matrix(context, host.scalar(2), host.scalar(2), complex),
                        {{1, 1}, {1, {1, 1}}});
}

TEST_F(Blocks, MatrixChecksItsSizes) {
  Anyval* one = host.scalar(1);
  Anyval* f = host.function([=](double, double) { return one; });
  Anyval* two = host.scalar(2);
  expect_error(matrix(context, f, f, two), "non-scalar value", 0, 1);
  expect_error(matrix(context, two, f, two), "non-scalar value", 0, 2);
  expect_error(matrix(context, two, two, two), "must be function", 0, 3);
  const struct {
    Complex m, n;
    const char* message;
    int arg;
  } cases[] = {{{2, 1}, {2, 1}, "must be real", 1},
               {2, {2, 1}, "must be real", 2},
               {0, 0, "must be positive", 1},
               {-1.5, 2, "must be positive", 1},
               {3, 0.99, "incorrect column dimensions", 1},
               {2.5, 2.5, "must be integer", 1},
               {kNaN, 2, "must be integer", 1},
               {8000001, 2.5, "size too large", 1},
               {kInf, 2, "size too large", 1},
               {2, 2.5, "must be integer", 2},
               {2, kNaN, "must be integer", 2},
               {2, 8000001, "size too large", 2},
               {2, kInf, "size too large", 2},
               {3000, 3000, "size too large", 0}};
  for (const auto& c : cases)
    expect_error(matrix(context, number_of(c.m), number_of(c.n), f), c.message, 0, c.arg);
  // Within 1e-10 below an integer the size passes, and loses one; a little above keeps it.
  EXPECT_EQ(as_result_matrix(matrix(context, host.scalar(2.99999999999), two, f))->rows, 2);
  EXPECT_EQ(as_result_matrix(matrix(context, host.scalar(3.00000000001), two, f))->rows, 3);
  EXPECT_EQ(as_result_matrix(matrix(context, host.scalar(0.99999999999), two, f))->rows, 0);
  EXPECT_EQ(as_result_matrix(matrix(context, host.scalar(8000000), host.scalar(1), f))->rows,
            8000000);
}

TEST_F(Blocks, MatrixPassesOnWhatItsFunctionReturns) {
  Anyval* two = host.scalar(2);
  Anyval* own = mkError(context, "own words", 7);
  const auto with = [&](Anyval* at_corner, Anyval* later) {
    return matrix(context, two, two, host.function([=](double i, double j) {
      return i + j == 0 ? at_corner : later;
    }));
  };
  expect_error(with(own, two), "own words", 0, 3);
  EXPECT_EQ(with(two, own), own);
  expect_error(with(square, two), "non-scalar value", 0, 3);
  expect_error(with(two, square), "non-scalar value", 0, 3);
  // A function may call `matrix` itself.
  Anyval* ones = host.function([&](double, double) { return host.scalar(1); });
  Anyval* outer = host.function([&](double i, double) {
    aMatrix* m = as_result_matrix(matrix(context, host.scalar(i + 1), two, ones));
    return host.scalar(m->rows);
  });
  expect_matrix(matrix(context, two, two, outer), {{1, 1}, {2, 2}});
  EXPECT_EQ(host.evaluator().depth(), 0u);
}

TEST_F(Blocks, EveryAllocationMayFail) {
  Anyval* two = host.scalar(2);
  Anyval* zero = host.scalar(0);
  Anyval* one_i = host.scalar(1, 1);
  aMatrix* a = host.complex_matrix({{1, {2, 3}}, {4, 5}});
  aMatrix* nested = host.nested(1, 1, {host.scalar(3, 4)});
  Anyval* f = host.function([=](double, double) { return one_i; });
  const auto check = [&](Anyval* value, int) {
    // The imaginary part of a nested scalar is stored by the lazy rule, whose failure is a throw.
    if (value == sError_OutOfMemory) return;
    expect_error(value, "Unknown error", 0, 0);
  };
  const auto check_block = [&](Anyval* value, int nth) {
    constexpr int kRecord = 3;  // After both parts.
    EXPECT_EQ(value, nth < kRecord ? sError_OutOfMemory : nullptr) << nth;
  };
  for (const Failing failing : {Failing::once, Failing::from_then_on}) {
    with_failing_allocations([&] { return submatrix(context, a, zero, zero, zero, zero, zero); },
                             check_block, failing);
    with_failing_allocations(
        [&] { return submatrix(context, nested, zero, zero, zero, zero, zero); }, check, failing);
    with_failing_allocations([&] { return matrix(context, two, two, f); }, check, failing);
  }
  EXPECT_EQ(host.evaluator().depth(), 0u);
}

}  // namespace
}  // namespace matrix_pack
