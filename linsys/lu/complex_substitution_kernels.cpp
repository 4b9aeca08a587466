#include "linsys/lu/column_groups.hpp"
#include "linsys/lu/substitution_kernels.hpp"
#include "pack/numeric/lanes/quotients.hpp"
#include "pack/numeric/lanes/runs.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// --- Many right-hand sides: as in the real kernels, in substitution_kernels.cpp. ---

using Row = Run<kLanes>;

struct Rows {
  double re[kTriangle][kLanes];
  double im[kTriangle][kLanes];

  ComplexView row(Index i) { return {re[i], im[i]}; }
};

void gather(Index n, Index cols, const ConstComplexView& x, Rows& rows) {
  for (Index q = 0; q < kLanes; ++q) {
    const ConstComplexView column = x.column(q < cols ? q : cols - 1);
    for (Index i = 0; i < n; ++i) {
      rows.re[i][q] = column.re[i];
      rows.im[i][q] = column.im[i];
    }
  }
}

void scatter(Index n, Index cols, const Rows& rows, const ComplexView& x) {
  for (Index q = 0; q < kLanes && q < cols; ++q) {
    const ComplexView column = x.column(q);
    for (Index i = 0; i < n; ++i) {
      column.re[i] = rows.re[i][q];
      column.im[i] = rows.im[i][q];
    }
  }
}

MATRIX_INLINE void subtract_multiple(const ComplexView& row, Complex factor,
                                     const ComplexOf<Row>& x) {
  store(row, minus_multiple(load<Row>(row), x, factor));
}

// So small a triangle is gone through element by element, if the right-hand sides are as few.
constexpr Index kFew = 4;

void solve_lower_by_elements(Index n, const ConstComplexView& l, Index cols, const ComplexView& x) {
  for (Index k = 0; k < cols; ++k) {
    for (Index i = 1; i < n; ++i) {
      Complex s = x(i, k);
      for (Index j = 0; j < i; ++j) s = subtract(s, multiply(l(i, j), x(j, k)));
      x.set(i, k, s);
    }
  }
}

void solve_upper_by_elements(Index n, const ConstComplexView& u, Index cols, const ComplexView& x) {
  for (Index i = n - 1; i >= 0; --i) {
    const Divisor d = divisor(u(i, i));
    for (Index k = 0; k < cols; ++k) {
      Complex s = x(i, k);
      for (Index j = i + 1; j < n; ++j) s = subtract(s, multiply(u(i, j), x(j, k)));
      x.set(i, k, quotient(s.re, s.im, d));
    }
  }
}

void solve_lower(Index n, const ConstComplexView& l, Index cols, const ComplexView& x) {
  if (n <= kFew && cols <= kFew) return solve_lower_by_elements(n, l, cols, x);
  for (Index j = 0; j < cols; j += kLanes) {
    Rows rows;
    gather(n, cols - j, x.column(j), rows);
    for (Index t = 0; t < n; ++t) {
      const ComplexOf<Row> xt = load<Row>(rows.row(t));
      for (Index i = t + 1; i < n; ++i) subtract_multiple(rows.row(i), l(i, t), xt);
    }
    scatter(n, cols - j, rows, x.column(j));
  }
}

// As in the real kernels; of each row the real parts stand first.
template <int G>
void solve_upper_group(Index n, const ConstComplexView& u, Index cols, const ComplexView& x,
                       double* work) {
  constexpr Index kGroup = G * kWidth;
  using R = Run<kGroup>;
  const auto row = [=](Index i) MATRIX_INLINE_LAMBDA {
    double* const re = work + 2 * i * kGroup;
    return ComplexView{re, re + kGroup};
  };
  for (Index q = 0; q < kGroup; ++q) {
    const ConstComplexView column = x.column(smaller(q, cols - 1));
    for (Index i = 0; i < n; ++i) row(i).set(q, column[i]);
  }
  for (Index i = n - 1; i >= 0; --i) {
    ComplexOf<R> s = load<R>(row(i));
    for (Index j = i + 1; j < n; ++j) s = minus_multiple(s, load<R>(row(j)), u(i, j));
    const Divisor d = divisor(u(i, i));
    MATRIX_UNROLL
    for (int v = 0; v < R::kVectors; ++v) {
      const auto y = quotient(s.re.part[v], s.im.part[v], d);
      s.re.part[v] = y.re;
      s.im.part[v] = y.im;
    }
    store(row(i), s);
  }
  for (Index q = 0; q < smaller(kGroup, cols); ++q) {
    const ComplexView column = x.column(q);
    for (Index i = 0; i < n; ++i) column.set(i, row(i)[q]);
  }
}

void solve_upper(Index n, const ConstComplexView& u, Index cols, const ComplexView& x,
                 double* work) {
  if (n <= kFew && cols <= kFew) return solve_upper_by_elements(n, u, cols, x);
  alignas(64) double small[kTriangle * kUpperColumns];
  work = n <= kTriangle ? small : line_start(work);
  over_groups<4>(cols, [&]<int G>(Index j, Vectors<G>) {
    solve_upper_group<G>(n, u, cols - j, x.column(j), work);
  });
}

// --- One right-hand side: forward, four columns of the triangle at a time. ---

constexpr Index kColumns = 4;

void subtract_columns(Index m, const ConstComplexView& a, const ConstComplexView& x,
                      double* __restrict re, double* __restrict im) {
  Complex factors[kColumns];
  for (Index t = 0; t < kColumns; ++t) factors[t] = x[t];
  for (Index i = 0; i < m; ++i) {
    Complex s = {re[i], im[i]};
    MATRIX_UNROLL
    for (Index t = 0; t < kColumns; ++t) s = subtract(s, multiply(a(i, t), factors[t]));
    re[i] = s.re;
    im[i] = s.im;
  }
}

void forward(Index n, const ConstComplexView& l, const ComplexView& x) {
  for (Index k = 0; k < n; k += kColumns) {
    const Index end = smaller(k + kColumns, n);
    for (Index t = k; t < end; ++t)
      for (Index i = t + 1; i < end; ++i) x.set(i, subtract(x[i], multiply(l(i, t), x[t])));
    if (end < n) subtract_columns(n - end, l.from(end, k), x + k, x.re + end, x.im + end);
  }
}

void backward(Index n, const ConstComplexView& u, const ComplexView& x) {
  for (Index i = n - 1; i >= 0; --i) {
    Complex s = x[i];
    for (Index j = i + 1; j < n; ++j) s = subtract(s, multiply(u(i, j), x[j]));
    x.set(i, divide(s, u(i, i)));
  }
}

}  // namespace

const ComplexSubstitutionKernels complex_substitution_kernels_table = {solve_lower, solve_upper,
                                                                       forward, backward};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
