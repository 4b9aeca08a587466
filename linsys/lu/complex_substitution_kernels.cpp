#include "linsys/lu/substitution_kernels.hpp"
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

void solve_lower(Index n, const ConstComplexView& l, Index cols, const ComplexView& x) {
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

void solve_upper(Index n, const ConstComplexView& u, Index cols, const ComplexView& x) {
  for (Index j = 0; j < cols; j += kLanes) {
    Rows rows;
    gather(n, cols - j, x.column(j), rows);
    for (Index t = n - 1; t >= 0; --t) {
      const Complex diagonal = u(t, t);
      for (Index q = 0; q < kLanes; ++q) {
        const Complex y = divide({rows.re[t][q], rows.im[t][q]}, diagonal);
        rows.re[t][q] = y.re;
        rows.im[t][q] = y.im;
      }
      const ComplexOf<Row> xt = load<Row>(rows.row(t));
      for (Index i = 0; i < t; ++i) subtract_multiple(rows.row(i), u(i, t), xt);
    }
    scatter(n, cols - j, rows, x.column(j));
  }
}

// --- One right-hand side: four columns of the triangle at a time. ---

constexpr Index kColumns = 4;

// x[i] -= a factor
MATRIX_INLINE void subtract_product(const ComplexView& x, Index i, Complex a, Complex factor) {
  x.set(i, subtract(x[i], multiply(a, factor)));
}

template <int step>
void subtract_columns(Index m, const ConstComplexView& a, const ConstComplexView& x,
                      double* __restrict re, double* __restrict im) {
  Complex factors[kColumns];
  for (Index t = 0; t < kColumns; ++t) factors[t] = x[step * t];
  for (Index i = 0; i < m; ++i) {
    Complex s = {re[i], im[i]};
    MATRIX_UNROLL
    for (Index t = 0; t < kColumns; ++t) s = subtract(s, multiply(a(i, step * t), factors[t]));
    re[i] = s.re;
    im[i] = s.im;
  }
}

void forward(Index n, const ConstComplexView& l, const ComplexView& x) {
  for (Index k = 0; k < n; k += kColumns) {
    const Index end = smaller(k + kColumns, n);
    for (Index t = k; t < end; ++t)
      for (Index i = t + 1; i < end; ++i) subtract_product(x, i, l(i, t), x[t]);
    if (end < n) subtract_columns<1>(n - end, l.from(end, k), x + k, x.re + end, x.im + end);
  }
}

void backward(Index n, const ConstComplexView& u, const ComplexView& x) {
  for (Index end = n; end > 0; end -= kColumns) {
    const Index k = larger(end - kColumns, 0);
    for (Index t = end - 1; t >= k; --t) {
      const Complex xt = divide(x[t], u(t, t));
      x.set(t, xt);
      for (Index i = k; i < t; ++i) subtract_product(x, i, u(i, t), xt);
    }
    if (k > 0) subtract_columns<-1>(k, u.column(end - 1), x + (end - 1), x.re, x.im);
  }
}

}  // namespace

const ComplexSubstitutionKernels complex_substitution_kernels_table = {solve_lower, solve_upper,
                                                                       forward, backward};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
