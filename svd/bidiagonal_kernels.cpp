#include "svd/bidiagonal_kernels.hpp"

#include "pack/numeric/lanes/column_products.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Rows, of which the first `head` come before a cache line.
struct Rows {
  Index count;
  Index head;
};

// Columns 0, 8, 16... of a after the column step: their terms of one partial sum for each row,
// added to those before.
template <bool kColumnStep, int kColumns>
MATRIX_INLINE void add_terms(Rows rows, ConstRealView a, const double* f, const double* u,
                             const double* x, const double* before, double* sums) {
  Factors<kColumns> fk = {};
  if constexpr (kColumnStep) fk = factors<kColumns>(f, kLanes);
  const auto xk = factors<kColumns>(x, kLanes);
  over_lines(rows.count, rows.head, [=]<class V>(Index j, V) MATRIX_INLINE_LAMBDA {
    V sum = load<V>(before + j);
    for (int k = 0; k < kColumns; ++k) {
      V ajk = load<V>(a.column(k * kLanes) + j);
      if constexpr (kColumnStep) ajk += load<V>(u + j) * fk.of[k];
      sum += ajk * xk.of[k];
    }
    store(sums + j, sum);
  });
}

// The same for those of the columns k, k + 8, k + 16 and k + 24 that exist.
template <bool kColumnStep>
void add_lane(Rows rows, Index k, Index cols, ConstRealView a, const double* f, const double* u,
              const double* x, const double* before, double* sums) {
  a = a.from(0, k);
  x += k;
  if constexpr (kColumnStep) f += k;
  switch (smaller(4, (cols - k + kLanes - 1) / kLanes)) {
    case 1:
      return add_terms<kColumnStep, 1>(rows, a, f, u, x, before, sums);
    case 2:
      return add_terms<kColumnStep, 2>(rows, a, f, u, x, before, sums);
    case 3:
      return add_terms<kColumnStep, 3>(rows, a, f, u, x, before, sums);
    default:
      return add_terms<kColumnStep, 4>(rows, a, f, u, x, before, sums);
  }
}

// `sums` has eight partial sums for each row, each with room for the rows and two lines.
template <bool kColumnStep>
void sums_of_rows(Rows rows, Index cols, ConstRealView a, const double* f, const double* u,
                  const double* x, double* sums, double* t) {
  static_assert(kLanes == 8, "row_sums_work counts them");
  Index step = rows.count;
  if (rows.head != 0) {
    sums = line_start(sums) + kLine - rows.head;
    step = (rows.count / kLine + 1) * kLine;
  }
  // The sums of lanes with columns begin with the zeros of t.
  for (Index j = 0; j < rows.count; ++j) t[j] = 0.0;
  for (Index j = cols * step; j < (kLanes - 1) * step + rows.count; ++j) sums[j] = 0.0;
  for (Index k = 0; k < cols; k += 4 * kLanes)
    for (Index q = 0; q < smaller(kLanes, cols - k); ++q)
      add_lane<kColumnStep>(rows, k + q, cols, a, f, u, x, k == 0 ? t : sums + q * step,
                            sums + q * step);
  const auto pair = [=]<class V>(Index q, Index j, V) MATRIX_INLINE_LAMBDA {
    return load<V>(sums + q * step + j) + load<V>(sums + (q + 4) * step + j);
  };
  over_lines(rows.count, rows.head, [=]<class V>(Index j, V v) MATRIX_INLINE_LAMBDA {
    store(t + j, (pair(0, j, v) + pair(2, j, v)) + (pair(1, j, v) + pair(3, j, v)));
  });
}

void row_sums(Index rows, Index cols, ConstRealView a, const double* f, const double* u,
              const double* x, double* sums, double* t) {
  for (Index j = 0; j < rows; j += kSumRows) {
    const Index count = smaller(kSumRows, rows - j);
    const Rows block = {count, head_of(a.from(j, 0), count)};
    if (f != nullptr)
      sums_of_rows<true>(block, cols, a.from(j, 0), f, u + j, x, sums, t + j);
    else
      sums_of_rows<false>(block, cols, a.from(j, 0), f, u, x, sums, t + j);
  }
}

// Both updates of a few columns, and their dot products with x, which replace f. A function of its
// own: where nothing is optimised, what is inlined shares no stack.
template <int kColumns>
void update_and_dot(Index rows, RealView a, double* f, const double* u, const double* t,
                    const double* y, const double* x) {
  const auto fk = factors<kColumns>(f);
  const auto yk = factors<kColumns>(y);
  dots_with<kColumns>(rows, head_of(a, rows), x, f, [=]<class V>(Index j, V) MATRIX_INLINE_LAMBDA {
    const V uj = load<V>(u + j);
    const V tj = load<V>(t + j);
    return [=](int k) MATRIX_INLINE_LAMBDA {
      V ajk = load<V>(a.column(k) + j) + uj * fk.of[k];
      ajk += tj * yk.of[k];
      store(a.column(k) + j, ajk);
      return ajk;
    };
  });
}

void add_outer(Index rows, Index cols, RealView a, const double* u, const double* f) {
  by_fours(0, cols, [=]<int K>(Index k, Group<K>) MATRIX_INLINE_LAMBDA {
    add_outer_to<K>(rows, a.from(0, k), u, f + k);
  });
}

void reflect_both(Index rows, Index cols, RealView a, double* f, const double* u, const double* t,
                  const double* y, const double* x) {
  if (u != nullptr && t != nullptr && x != nullptr) {
    // As many columns together as leave their sums in registers. From the last column on: it was
    // the last one that the sums of rows have read.
    Index k = cols;
    for (; k % 4 != 0; --k)
      update_and_dot<1>(rows, a.from(0, k - 1), f + k - 1, u, t, y + k - 1, x);
    if (k % kWidth != 0) {
      k -= 4;
      update_and_dot<4>(rows, a.from(0, k), f + k, u, t, y + k, x);
    }
    for (; k > 0; k -= kWidth)
      update_and_dot<kWidth>(rows, a.from(0, k - kWidth), f + k - kWidth, u, t, y + k - kWidth, x);
    return;
  }
  if (u != nullptr) add_outer(rows, cols, a, u, f);
  if (t != nullptr) add_outer(rows, cols, a, t, y);
  if (x == nullptr) return;
  by_fours(0, cols, [=]<int K>(Index k, Group<K>) MATRIX_INLINE_LAMBDA {
    dots_of<K>(rows, a.from(0, k), x, f + k);
  });
}

}  // namespace

const BidiagonalKernels bidiagonal_kernels_table = {row_sums, reflect_both};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
