#include "linsys/lu/substitution_kernels.hpp"

#include "linsys/lu/column_groups.hpp"
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

// G vectors of columns side by side, row after row in `work`; lanes left over are filled as above.
// Each row waits for the one below it: the columns are what goes on at the same time.
template <int G>
void solve_upper_group(Index n, ConstRealView u, Index cols, RealView x, double* work) {
  constexpr Index kGroup = G * kWidth;
  for (Index q = 0; q < kGroup; ++q) {
    const double* const column = x.column(smaller(q, cols - 1));
    for (Index i = 0; i < n; ++i) work[i * kGroup + q] = column[i];
  }
  for (Index i = n - 1; i >= 0; --i) {
    using R = Run<kGroup>;
    double* const row = work + i * kGroup;
    R s = load<R>(row);
    for (Index j = i + 1; j < n; ++j) s = minus_multiple(s, load<R>(work + j * kGroup), u(i, j));
    store(row, quotient(s, u(i, i)));
  }
  for (Index q = 0; q < smaller(kGroup, cols); ++q) {
    double* const column = x.column(q);
    for (Index i = 0; i < n; ++i) column[i] = work[i * kGroup + q];
  }
}

void solve_upper(Index n, ConstRealView u, Index cols, RealView x, double* work) {
  alignas(64) double small[kTriangle * kUpperColumns];
  work = n <= kTriangle ? small : line_start(work);
  over_groups<8>(cols, [=]<int G>(Index j, Vectors<G>) {
    solve_upper_group<G>(n, u, cols - j, x.from(0, j), work);
  });
}

// --- One right-hand side: forward, eight columns of the triangle at a time. ---

constexpr Index kColumns = 8;

// y := ((y - a_0 x_0) - a_1 x_1) - ... for eight columns of A.
void subtract_columns(Index m, ConstRealView a, const double* x, double* __restrict y) {
  double factors[kColumns];
  for (Index t = 0; t < kColumns; ++t) factors[t] = x[t];
  for (Index i = 0; i < m; ++i) {
    double s = y[i];
    MATRIX_UNROLL
    for (Index t = 0; t < kColumns; ++t) s -= a(i, t) * factors[t];
    y[i] = s;
  }
}

void forward(Index n, ConstRealView l, double* x) {
  for (Index k = 0; k < n; k += kColumns) {
    const Index end = smaller(k + kColumns, n);
    for (Index t = k; t < end; ++t)
      for (Index i = t + 1; i < end; ++i) x[i] -= l(i, t) * x[t];
    if (end < n) subtract_columns(n - end, l.from(end, k), x + k, x + end);
  }
}

// Row by row: each one waits for the one below it.
void backward(Index n, ConstRealView u, double* x) {
  for (Index i = n - 1; i >= 0; --i) {
    double s = x[i];
    for (Index j = i + 1; j < n; ++j) s -= u(i, j) * x[j];
    x[i] = s / u(i, i);
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
