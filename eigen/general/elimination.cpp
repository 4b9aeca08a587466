#include "eigen/general/elimination.hpp"

#include <cmath>
#include <utility>

#include "eigen/general/elimination_kernels.hpp"

namespace matrix_pack {

namespace {

// The row of the first largest element among column[m..high]; m when all are zero.
int find_pivot(const double* column, int m, int high) {
  double x = 0.0;
  int pivot = m;
  for (int j = m; j <= high; ++j) {
    if (std::fabs(column[j]) > std::fabs(x)) {
      x = column[j];
      pivot = j;
    }
  }
  return pivot;
}

// Exchanges rows i and m over columns m-1..n-1, then columns i and m over rows 0..high.
void exchange(RealView a, int i, int m, const Balance& b) {
  if (i == m) return;
  for (int j = m - 1; j < b.n; ++j) std::swap(a(i, j), a(m, j));
  for (int j = 0; j <= b.high; ++j) std::swap(a(j, i), a(j, m));
}

// column[i] := column[i] / x for i = m+1..high; lists the runs of rows whose element was not zero.
// (A multiplier may be: the quotient underflows. Its row still takes part.)
Index make_multipliers(double* column, int m, int high, double x, Index* runs) {
  Index count = 0;
  for (int i = m + 1; i <= high; ++i) {
    if (column[i] == 0.0) continue;
    column[i] /= x;
    if (count == 0 || runs[2 * count - 1] != i) runs[2 * count++] = i;
    runs[2 * count - 1] = i + 1;
  }
  return count;
}

}  // namespace

void eliminate_to_hessenberg(RealView a, const Balance& b, const EliminationWork& work) {
  for (int m = b.low + 1; m < b.high; ++m) {
    double* const column = a.column(m - 1);
    const int pivot = find_pivot(column, m, b.high);
    work.pivots[m] = pivot;
    exchange(a, pivot, m, b);
    if (!(std::fabs(column[m]) > 0.0)) continue;  // All zero, or no number among them.
    const Index count = make_multipliers(column, m, b.high, column[m], work.runs);
    elimination_kernels().eliminate({m, b.high, b.n, work.runs, count}, a);
  }
}

void accumulate_eliminations(ConstRealView a, const Balance& b, const double* pivots, RealView z) {
  for (int m = b.high - 1; m > b.low; --m) {
    for (int i = m + 1; i <= b.high; ++i) z(i, m) = a(i, m - 1);
    const int i = static_cast<int>(pivots[m]);
    if (i == m) continue;
    for (int j = m; j <= b.high; ++j) {
      z(m, j) = z(i, j);
      z(i, j) = 0.0;
    }
    z(i, m) = 1.0;
  }
}

}  // namespace matrix_pack
