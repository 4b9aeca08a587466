#include "eigen/general/elimination.hpp"

#include <cmath>
#include <utility>

#include "eigen/general/elimination_kernels.hpp"

namespace matrix_pack {

namespace {

// The row of the first largest element among column[m..igh]; m when all are zero.
int find_pivot(const double* column, int m, int igh) {
  double x = 0.0;
  int pivot = m;
  for (int j = m; j <= igh; ++j) {
    if (std::fabs(column[j]) > std::fabs(x)) {
      x = column[j];
      pivot = j;
    }
  }
  return pivot;
}

// Exchanges rows i and m over columns m-1..n-1, then columns i and m over rows 0..igh.
void exchange(const Parts& a, int i, int m, int igh) {
  if (i == m) return;
  for (int j = m - 1; j < a.n; ++j) std::swap(a.re[j * a.ld + i], a.re[j * a.ld + m]);
  for (int j = 0; j <= igh; ++j) std::swap(a.re[i * a.ld + j], a.re[m * a.ld + j]);
}

// column[i] := column[i] / x for i = m+1..igh; lists the runs of rows whose multiplier is not zero.
std::ptrdiff_t make_multipliers(double* column, int m, int igh, double x, std::ptrdiff_t* runs) {
  std::ptrdiff_t count = 0;
  for (int i = m + 1; i <= igh; ++i) {
    if (column[i] == 0.0) continue;
    column[i] /= x;
    if (column[i] == 0.0) continue;
    if (count == 0 || runs[2 * count - 1] != i) runs[2 * count++] = i;
    runs[2 * count - 1] = i + 1;
  }
  return count;
}

}  // namespace

void eliminate_to_hessenberg(const Parts& a, const Balance& b, const EliminationWork& work) {
  for (int m = b.low + 1; m < b.igh; ++m) {
    double* const column = a.re + (m - 1) * a.ld;
    const int pivot = find_pivot(column, m, b.igh);
    work.pivots[m] = pivot;
    exchange(a, pivot, m, b.igh);
    if (!(std::fabs(column[m]) > 0.0)) continue;  // All zero, or no number among them.
    const std::ptrdiff_t count = make_multipliers(column, m, b.igh, column[m], work.runs);
    elimination_kernels().eliminate({m, b.igh, a.n, work.runs, count}, a.re, a.ld);
  }
}

void accumulate_eliminations(const Parts& a, const Balance& b, const double* pivots, double* z,
                             std::ptrdiff_t ldz) {
  for (int m = b.igh - 1; m > b.low; --m) {
    for (int i = m + 1; i <= b.igh; ++i) z[m * ldz + i] = a.re[(m - 1) * a.ld + i];
    const int i = static_cast<int>(pivots[m]);
    if (i == m) continue;
    for (int j = m; j <= b.igh; ++j) {
      z[j * ldz + m] = z[j * ldz + i];
      z[j * ldz + i] = 0.0;
    }
    z[m * ldz + i] = 1.0;
  }
}

}  // namespace matrix_pack
