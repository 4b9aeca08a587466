#include "linsys/lu/substitution_kernels.hpp"
#include "pack/numeric/complex_arithmetic.hpp"
#include "pack/numeric/runs.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// --- Many right-hand sides: eight of them lie side by side in a lane each. See the real kernels.
// ---

struct Rows {
  double re[kTriangle][kLanes];
  double im[kTriangle][kLanes];

  Split row(Index i) { return {re[i], im[i]}; }
};

void gather(Index n, Index cols, ConstSplit x, Index ldx, Rows& rows) {
  for (Index q = 0; q < kLanes; ++q) {
    const ConstSplit column = x + (q < cols ? q : cols - 1) * ldx;
    for (Index i = 0; i < n; ++i) {
      rows.re[i][q] = column.re[i];
      rows.im[i][q] = column.im[i];
    }
  }
}

void scatter(Index n, Index cols, const Rows& rows, Split x, Index ldx) {
  for (Index q = 0; q < kLanes && q < cols; ++q) {
    const Split column = x + q * ldx;
    for (Index i = 0; i < n; ++i) {
      column.re[i] = rows.re[i][q];
      column.im[i] = rows.im[i][q];
    }
  }
}

MATRIX_LANES_INLINE void subtract_multiple(Split row, Complex factor, const ComplexRun<kLanes>& x) {
  store(row, minus_multiple(load<kLanes>(row), x, factor));
}

void solve_lower(Index n, ConstSplit l, Index ldl, Index cols, Split x, Index ldx) {
  for (Index j = 0; j < cols; j += kLanes) {
    Rows rows;
    gather(n, cols - j, x + j * ldx, ldx, rows);
    for (Index t = 0; t < n; ++t) {
      const ComplexRun<kLanes> xt = load<kLanes>(rows.row(t));
      for (Index i = t + 1; i < n; ++i)
        subtract_multiple(rows.row(i), element(l + (i + t * ldl)), xt);
    }
    scatter(n, cols - j, rows, x + j * ldx, ldx);
  }
}

void solve_upper(Index n, ConstSplit u, Index ldu, Index cols, Split x, Index ldx) {
  for (Index j = 0; j < cols; j += kLanes) {
    Rows rows;
    gather(n, cols - j, x + j * ldx, ldx, rows);
    for (Index t = n - 1; t >= 0; --t) {
      const Complex diagonal = element(u + (t + t * ldu));
      for (Index q = 0; q < kLanes; ++q) {
        const Complex y = divide({rows.re[t][q], rows.im[t][q]}, diagonal);
        rows.re[t][q] = y.re;
        rows.im[t][q] = y.im;
      }
      const ComplexRun<kLanes> xt = load<kLanes>(rows.row(t));
      for (Index i = 0; i < t; ++i) subtract_multiple(rows.row(i), element(u + (i + t * ldu)), xt);
    }
    scatter(n, cols - j, rows, x + j * ldx, ldx);
  }
}

// --- One right-hand side: the columns of the triangle pass by, four at a time. ---

constexpr Index kColumns = 4;

MATRIX_LANES_INLINE void subtract_multiple(Split x, Index i, ConstSplit a, Complex factor) {
  const Complex y = subtract(element(x + i), multiply(element(a), factor));
  x.re[i] = y.re;
  x.im[i] = y.im;
}

template <int step>
void subtract_columns(Index m, ConstSplit a, Index lda, ConstSplit x, double* __restrict re,
                      double* __restrict im) {
  Complex factors[kColumns];
  for (Index t = 0; t < kColumns; ++t) factors[t] = element(x + step * t);
  for (Index i = 0; i < m; ++i) {
    Complex s = {re[i], im[i]};
    MATRIX_UNROLL
    for (Index t = 0; t < kColumns; ++t)
      s = subtract(s, multiply(element(a + (i + step * t * lda)), factors[t]));
    re[i] = s.re;
    im[i] = s.im;
  }
}

void forward(Index n, ConstSplit l, Index ldl, Split x) {
  for (Index k = 0; k < n; k += kColumns) {
    const Index end = k + kColumns < n ? k + kColumns : n;
    for (Index t = k; t < end; ++t)
      for (Index i = t + 1; i < end; ++i)
        subtract_multiple(x, i, l + (i + t * ldl), element(x + t));
    if (end < n)
      subtract_columns<1>(n - end, l + (end + k * ldl), ldl, x + k, x.re + end, x.im + end);
  }
}

void backward(Index n, ConstSplit u, Index ldu, Split x) {
  for (Index end = n; end > 0; end -= kColumns) {
    const Index k = end > kColumns ? end - kColumns : 0;
    for (Index t = end - 1; t >= k; --t) {
      const Complex xt = divide(element(x + t), element(u + (t + t * ldu)));
      x.re[t] = xt.re;
      x.im[t] = xt.im;
      for (Index i = k; i < t; ++i) subtract_multiple(x, i, u + (i + t * ldu), xt);
    }
    if (k > 0) subtract_columns<-1>(k, u + (end - 1) * ldu, ldu, x + (end - 1), x.re, x.im);
  }
}

}  // namespace

const ComplexSubstitutionKernels complex_substitution_kernels_table = {solve_lower, solve_upper,
                                                                       forward, backward};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
