// submatrix and matrix.
#include <algorithm>

#include "structural/structural.hpp"
#include "tests/support/test_host.hpp"

namespace matrix_pack {
namespace {

using namespace test;

class Blocks : public InHost {
 protected:
  Anyval* block(Anyval* a, StdComplex ir, StdComplex jr, StdComplex ic, StdComplex jc,
                double origin = 0) {
    return submatrix(c, a, number_of(ir), number_of(jr), number_of(ic), number_of(jc),
                     host.scalar(origin));
  }
  Anyval* number_of(StdComplex z) { return host.scalar(z.real(), z.imag()); }

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
  const struct {
    StdComplex bound;
    double origin;
    const char* message;
  } cases[] = {{{1, 2}, 0, "must be real"},
               {2147483648.0, 0, "integer too large"},
               {2147483647.0, 0, "invalid dimension"},
               {kInf, 0, "integer too large"},
               {-kInf, 0, "invalid dimension"},
               {kNan, 0, "floating point error"},
               {3, 0, "invalid dimension"},
               {-1, 0, "invalid dimension"},
               {0, 1, "invalid dimension"},
               {4, 1, "invalid dimension"}};
  Anyval* const text = host.string("1");
  Anyval* const one = host.scalar(1);
  expect_error(submatrix(c, one, text, text, text, text, one), "must be array", 0, 1);
  for (int k = 3; k >= 0; --k) {
    Anyval* b[] = {one, one, one, one};
    std::fill(b + k, b + 4, text);
    expect_error(submatrix(c, square, b[0], b[1], b[2], b[3], one), "non-scalar value", 0, k + 2);
    for (const auto& [bound, origin, message] : cases) {
      StdComplex z[4] = {1, 1, 1, 1};
      z[k] = bound;
      // A fault is tied to the call.
      const int arg = std::isnan(bound.real()) ? 0 : k + 2;
      expect_error(block(square, z[0], z[1], z[2], z[3], origin), message, 0, arg);
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
  aMatrix* m = as_result_matrix(matrix(c, host.scalar(2), host.scalar(3), sum));
  expect_matrix(m, {{0, 10, 20}, {1, 11, 21}});
  EXPECT_EQ(m->im, nullptr);
  const std::vector<std::pair<double, double>> order = {{0, 0}, {0, 0}, {0, 1}, {0, 2},
                                                        {1, 0}, {1, 1}, {1, 2}};
  EXPECT_EQ(calls, order);

  Anyval* complex = host.function([&](double i, double j) { return host.scalar(1, i * j); });
  expect_complex_matrix(matrix(c, host.scalar(2), host.scalar(2), complex), {{1, 1}, {1, {1, 1}}});
}

TEST_F(Blocks, MatrixChecksItsSizes) {
  Anyval* one = host.scalar(1);
  Anyval* f = host.function([=](double, double) { return one; });
  Anyval* two = host.scalar(2);
  expect_error(matrix(c, f, f, two), "non-scalar value", 0, 1);
  expect_error(matrix(c, two, f, two), "non-scalar value", 0, 2);
  expect_error(matrix(c, two, two, two), "must be function", 0, 3);
  const struct {
    StdComplex m, n;
    const char* message;
    int arg;
  } cases[] = {{{2, 1}, {2, 1}, "must be real", 1},
               {2, {2, 1}, "must be real", 2},
               {0, 0, "must be positive", 1},
               {-1.5, 2, "must be positive", 1},
               {3, 0.99, "incorrect column dimensions", 1},
               {2.5, 2.5, "must be integer", 1},
               {kNan, 2, "must be integer", 1},
               {8000001, 2.5, "size too large", 1},
               {kInf, 2, "size too large", 1},
               {2, 2.5, "must be integer", 2},
               {2, kNan, "must be integer", 2},
               {2, 8000001, "size too large", 2},
               {2, kInf, "size too large", 2},
               {3000, 3000, "size too large", 0}};
  for (const auto& k : cases)
    expect_error(matrix(c, number_of(k.m), number_of(k.n), f), k.message, 0, k.arg);
  // Within 1e-10 below an integer the size passes, and loses one; a little above keeps it.
  for (const auto& [size, made] :
       {std::pair{2.99999999999, 2}, {3.00000000001, 3}, {0.99999999999, 0}, {8000000.0, 8000000}})
    EXPECT_EQ(as_result_matrix(matrix(c, host.scalar(size), one, f))->rows, made);
}

TEST_F(Blocks, MatrixPassesOnWhatItsFunctionReturns) {
  Anyval* two = host.scalar(2);
  Anyval* own = mkError(c, "own words", 7);
  const auto with = [&](Anyval* at_corner, Anyval* later) {
    return matrix(c, two, two, host.function([=](double i, double j) {
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
    aMatrix* m = as_result_matrix(matrix(c, host.scalar(i + 1), two, ones));
    return host.scalar(m->rows);
  });
  expect_matrix(matrix(c, two, two, outer), {{1, 1}, {2, 2}});
  EXPECT_EQ(host.evaluator().depth(), 0u);
}

// Both parts are there before the record is asked for: without it there is no value at all.
TEST_F(Blocks, SubmatrixWithoutARecordIsNothing) {
  aMatrix* a = host.complex_matrix({{1, {2, 3}}, {4, 5}});
  Anyval* zero = host.scalar(0);
  for (const int nth : {1, 2, 3}) {
    const AllocationFaults faults(nth);
    EXPECT_EQ(submatrix(c, a, zero, zero, zero, zero, zero),
              nth < 3 ? sError_OutOfMemory : nullptr);
  }
}

}  // namespace
}  // namespace matrix_pack
