#include "eigen/general/elimination_kernels.hpp"

#include "pack/numeric/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// y[k] += a x[k], k = first..last-1
MATRIX_LANES_INLINE void add_multiple(std::ptrdiff_t first, std::ptrdiff_t last, double a,
                                      const double* __restrict x, double* __restrict y) {
  for (std::ptrdiff_t k = first; k < last; ++k) y[k] += a * x[k];
}

// column[k] -= y[k] t for the rows first..last-1 that take part
MATRIX_LANES_INLINE void eliminate_rows(const EliminationStep& step, std::ptrdiff_t first,
                                        std::ptrdiff_t last, double t, const double* __restrict y,
                                        double* __restrict column) {
  for (std::ptrdiff_t i = 0; i < step.run_count; ++i) {
    const std::ptrdiff_t begin = step.runs[2 * i] > first ? step.runs[2 * i] : first;
    const std::ptrdiff_t end = step.runs[2 * i + 1] < last ? step.runs[2 * i + 1] : last;
    for (std::ptrdiff_t k = begin; k < end; ++k) column[k] -= y[k] * t;
  }
}

// Column by column: when column m takes up column i, the rows up to i have been eliminated and
// those below have not.
void eliminate(const EliminationStep& step, double* a, std::ptrdiff_t ld) {
  const std::ptrdiff_t m = step.m;
  const std::ptrdiff_t end = step.igh + 1;
  const double* const y = a + (m - 1) * ld;
  double* const pivot_column = a + m * ld;
  for (std::ptrdiff_t i = m + 1; i < end; ++i) {
    double* const column = a + i * ld;
    const double t = column[m];
    if (y[i] != 0.0) {
      pivot_column[i] -= y[i] * pivot_column[m];
      eliminate_rows(step, m + 1, i + 1, t, y, column);
      add_multiple(0, end, y[i], column, pivot_column);
      eliminate_rows(step, i + 1, end, t, y, column);
    } else {
      eliminate_rows(step, m + 1, end, t, y, column);
    }
  }
  for (std::ptrdiff_t j = end; j < step.n; ++j)
    eliminate_rows(step, m + 1, end, a[j * ld + m], y, a + j * ld);
}

}  // namespace

const EliminationKernels elimination_kernels_table = {eliminate};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
