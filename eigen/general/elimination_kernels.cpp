#include "eigen/general/elimination_kernels.hpp"

#include "pack/numeric/lanes/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// y[k] += a x[k], k = first..last-1
MATRIX_INLINE void add_multiple(Index first, Index last, double a, const double* __restrict x,
                                double* __restrict y) {
  for (Index k = first; k < last; ++k) y[k] += a * x[k];
}

// column[k] -= y[k] t for the rows first..last-1 that take part
MATRIX_INLINE void eliminate_rows(const EliminationStep& step, Index first, Index last, double t,
                                  const double* __restrict y, double* __restrict column) {
  for (Index i = 0; i < step.run_count; ++i) {
    const Index begin = larger(step.runs[2 * i], first);
    const Index end = smaller(step.runs[2 * i + 1], last);
    for (Index k = begin; k < end; ++k) column[k] -= y[k] * t;
  }
}

// Column by column: when column m takes up column i, the rows up to i have been eliminated and
// those below have not.
void eliminate(const EliminationStep& step, RealView a) {
  const Index m = step.m;
  const Index end = step.high + 1;
  const double* const y = a.column(m - 1);
  double* const pivot_column = a.column(m);
  Index run = 0;
  for (Index i = m + 1; i < end; ++i) {
    double* const column = a.column(i);
    const double t = column[m];
    while (run < step.run_count && step.runs[2 * run + 1] <= i) ++run;
    if (run < step.run_count && step.runs[2 * run] <= i) {
      pivot_column[i] -= y[i] * pivot_column[m];
      eliminate_rows(step, m + 1, i + 1, t, y, column);
      add_multiple(0, end, y[i], column, pivot_column);
      eliminate_rows(step, i + 1, end, t, y, column);
    } else {
      eliminate_rows(step, m + 1, end, t, y, column);
    }
  }
  for (Index j = end; j < step.n; ++j) {
    double* const column = a.column(j);
    eliminate_rows(step, m + 1, end, column[m], y, column);
  }
}

}  // namespace

const EliminationKernels elimination_kernels_table = {eliminate};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
