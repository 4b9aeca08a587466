// The inner loops of elimination to Hessenberg form.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// Step m of the elimination. The multipliers y of rows m+1..high are the elements of column m-1;
// rows whose element was 0 take no part. `runs` lists the others: begin and end of each run of
// consecutive rows, run_count pairs.
struct EliminationStep {
  Index m;
  Index high;
  Index n;
  const Index* runs;
  Index run_count;
};

struct EliminationKernels {
  // For the rows i of the runs, in this order: row i of columns m..n-1 becomes
  // row i - y[i] row m; then column m, rows 0..high, becomes column m + y[i] column i.
  void (*eliminate)(const EliminationStep& step, RealView a);
};
MATRIX_SELECT_KERNELS(EliminationKernels, elimination_kernels)

}  // namespace matrix_pack
