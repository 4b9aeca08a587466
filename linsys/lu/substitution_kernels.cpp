#include "linsys/lu/substitution_kernels.hpp"

#include "pack/numeric/lanes/runs.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// --- Many right-hand sides: eight of them lie side by side in a lane each. ---

using Row = Run<kLanes>;

// Rows of eight columns of X. Where X has fewer, the last one fills the lanes left over: whatever
// is computed there, and whatever fault it raises, happens in a lane of X too.
void gather(Index n, Index cols, ConstRealView x, double (*rows)[kLanes]) {
  for (Index q = 0; q < kLanes; ++q) {
    const double* column = x.column(q < cols ? q : cols - 1);
    for (Index i = 0; i < n; ++i) rows[i][q] = column[i];
  }
}

void scatter(Index n, Index cols, const double (*rows)[kLanes], RealView x) {
  for (Index q = 0; q < kLanes && q < cols; ++q)
    for (Index i = 0; i < n; ++i) x(i, q) = rows[i][q];
}

MATRIX_INLINE void subtract_multiple(double* row, double factor, const Row& x) {
  store(row, minus_multiple(load<Row>(row), x, factor));
}

void solve_lower(Index n, ConstRealView l, Index cols, RealView x) {
  for (Index j = 0; j < cols; j += kLanes) {
    double rows[kTriangle][kLanes];
    gather(n, cols - j, x.from(0, j), rows);
    for (Index t = 0; t < n; ++t) {
      const Row xt = load<Row>(rows[t]);
      for (Index i = t + 1; i < n; ++i) subtract_multiple(rows[i], l(i, t), xt);
    }
    scatter(n, cols - j, rows, x.from(0, j));
  }
}

void solve_upper(Index n, ConstRealView u, Index cols, RealView x) {
  for (Index j = 0; j < cols; j += kLanes) {
    double rows[kTriangle][kLanes];
    gather(n, cols - j, x.from(0, j), rows);
    for (Index t = n - 1; t >= 0; --t) {
      const Row xt = quotient(load<Row>(rows[t]), u(t, t));
      store(rows[t], xt);
      for (Index i = 0; i < t; ++i) subtract_multiple(rows[i], u(i, t), xt);
    }
    scatter(n, cols - j, rows, x.from(0, j));
  }
}

// --- One right-hand side: eight columns of the triangle at a time. ---

constexpr Index kColumns = 8;

// y := ((y - a_0 x_0) - a_1 x_1) - ... for eight columns of A, taken from left to right, or from
// right to left with step = -1.
template <int step>
void subtract_columns(Index m, ConstRealView a, const double* x, double* __restrict y) {
  double factors[kColumns];
  for (Index t = 0; t < kColumns; ++t) factors[t] = x[step * t];
  for (Index i = 0; i < m; ++i) {
    double s = y[i];
    MATRIX_UNROLL
    for (Index t = 0; t < kColumns; ++t) s -= a(i, step * t) * factors[t];
    y[i] = s;
  }
}

void forward(Index n, ConstRealView l, double* x) {
  for (Index k = 0; k < n; k += kColumns) {
    const Index end = smaller(k + kColumns, n);
    for (Index t = k; t < end; ++t)
      for (Index i = t + 1; i < end; ++i) x[i] -= l(i, t) * x[t];
    if (end < n) subtract_columns<1>(n - end, l.from(end, k), x + k, x + end);
  }
}

void backward(Index n, ConstRealView u, double* x) {
  for (Index end = n; end > 0; end -= kColumns) {
    const Index k = larger(end - kColumns, 0);
    for (Index t = end - 1; t >= k; --t) {
      x[t] = x[t] / u(t, t);
      for (Index i = k; i < t; ++i) x[i] -= u(i, t) * x[t];
    }
    if (k > 0) subtract_columns<-1>(k, u.from(0, end - 1), x + end - 1, x);
  }
}

bool is_finite_below_diagonal(Index n, ConstRealView a) {
  typedef long long Bits __attribute__((may_alias));
  constexpr long long kExponent = 0x7FF0000000000000LL;
  bool finite = true;
  for (Index j = 0; j < n; ++j) {
    const Bits* const column = reinterpret_cast<const Bits*>(a.column(j));
    for (Index i = j + 1; i < n; ++i) finite &= (column[i] & kExponent) != kExponent;
  }
  return finite;
}

}  // namespace

const SubstitutionKernels substitution_kernels_table = {solve_lower, solve_upper, forward, backward,
                                                        is_finite_below_diagonal};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
