// Several columns at once, for kernels: their dot products with a vector, and rank-one updates.
// Sums have the order of pack/numeric/vector_kernels.hpp. Included by *_kernels.cpp only.
#pragma once

#include "pack/numeric/lanes/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Fewer rows are not worth an extra stretch before the first line.
constexpr Index kFewestInLines = 192;

// How many rows of the columns of a come before a cache line that begins in them; 0 where it does
// not matter, or is not the same for all.
MATRIX_INLINE Index head_of(ConstRealView a, Index rows) {
  return rows < kFewestInLines || a.ld % kLine != 0 ? 0 : before_line(a.x);
}

// over_elements, of `head` elements and then of those behind.
template <class Body>
MATRIX_INLINE void over_lines(Index rows, Index head, Body body) {
  if (head != 0) over_elements(0, head, body);
  over_elements(head, rows, body);
}

// dots_with, inlined for a head of its own.
template <int kColumns, class Elements>
MATRIX_INLINE void dots_after(Index rows, Index head, const double* x, double* dots,
                              Elements elements) {
  // Adds the terms of column k in rows from...end - 1 to partial sums.
  const auto add = [&](int k, Index from, Index end, double* s) MATRIX_INLINE_LAMBDA {
    over_elements(from, end, [&]<class V>(Index j, V v) MATRIX_INLINE_LAMBDA {
      double* const sj = s + (j - from);
      store(sj, load<V>(sj) + elements(j, v)(k) * load<V>(x + j));
    });
  };
  Lanes sums[kColumns] = {};
  if (head != 0)
    for (int k = 0; k < kColumns; ++k) {
      double s[kLanes] = {};
      add(k, 0, head, s + kLanes - head);
      for (int p = 0; p < kParts; ++p) sums[k].part[p] = load_vector(s + p * kWidth);
    }
  Index whole = head;
  for (; whole + kLanes <= rows; whole += kLanes)
    for (int p = 0; p < kParts; ++p) {
      const Index j = whole + p * kWidth;
      const Vector xj = load_vector(x + j);
      const auto column = elements(j, Vector{});
      for (int k = 0; k < kColumns; ++k) sums[k].part[p] += column(k) * xj;
    }
  for (int k = 0; k < kColumns; ++k) {
    double s[kLanes];
    store_lanes(s, sums[k]);
    add(k, whole, rows, s);
    dots[k] = join(s);
  }
}

// dots[k] = the dot product of column k with x; elements(j, V{})(k) gives those of column k from
// row j on. After the first `head` rows come whole lines: each of the eight partial sums then
// stands where the line has its elements. (The first one may be any of them: they are joined as if
// in a ring.)
template <int kColumns, class Elements>
MATRIX_INLINE void dots_with(Index rows, Index head, const double* x, double* dots,
                             Elements elements) {
  if (head == 0)
    dots_after<kColumns>(rows, 0, x, dots, elements);
  else
    dots_after<kColumns>(rows, head, x, dots, elements);
}

// As many columns as one call takes together.
template <int K>
struct Group {};

// Calls body(k, Group<4>()) for four columns from k on as long as there are, then
// body(k, Group<1>()) for each one.
template <class Body>
MATRIX_INLINE void by_fours(Index from, Index end, Body body) {
  Index k = from;
  for (; k + 4 <= end; k += 4) body(k, Group<4>());
  for (; k < end; ++k) body(k, Group<1>());
}

// The factors of a few columns, `step` apart: copies, which a store to the array cannot change.
template <int kColumns, class T = double>
struct Factors {
  T of[kColumns];
};

template <int kColumns>
MATRIX_INLINE Factors<kColumns> factors(const double* f, Index step = 1) {
  Factors<kColumns> copies;
  for (int k = 0; k < kColumns; ++k) copies.of[k] = f[k * step];
  return copies;
}

// dots[k] = the dot product of column k with x
template <int kColumns>
MATRIX_INLINE void dots_of(Index rows, ConstRealView a, const double* x, double* dots) {
  dots_with<kColumns>(rows, head_of(a, rows), x, dots,
                      [=]<class V>(Index j, V) MATRIX_INLINE_LAMBDA {
                        return [=](int k) MATRIX_INLINE_LAMBDA { return load<V>(a.column(k) + j); };
                      });
}

// a(j,k) += u[j] * f[k]
template <int kColumns>
MATRIX_INLINE void add_outer_to(Index rows, RealView a, const double* u, const double* f) {
  const auto factor = factors<kColumns>(f);
  over_lines(rows, head_of(a, rows), [=]<class V>(Index j, V) MATRIX_INLINE_LAMBDA {
    const V uj = load<V>(u + j);
    for (int k = 0; k < kColumns; ++k)
      store(a.column(k) + j, load<V>(a.column(k) + j) + uj * factor.of[k]);
  });
}

}  // namespace

}  // namespace matrix_pack::MATRIX_KERNEL_SET
