// The inner loops of elimination to Hessenberg form.
#pragma once

#include <cstddef>

#include "pack/numeric/kernel_sets.hpp"

namespace matrix_pack {

// Step m of the elimination. The multipliers y of rows m+1..igh are the elements of column m-1;
// rows with y = 0 take no part. `runs` lists the others: begin and end of each run of consecutive
// rows, run_count pairs.
struct EliminationStep {
  std::ptrdiff_t m;
  std::ptrdiff_t igh;
  std::ptrdiff_t n;
  const std::ptrdiff_t* runs;
  std::ptrdiff_t run_count;
};

struct EliminationKernels {
  // For i = m+1..igh with y[i] != 0, in this order: row i of columns m..n-1 becomes
  // row i - y[i] row m; then column m, rows 0..igh, becomes column m + y[i] column i.
  void (*eliminate)(const EliminationStep& step, double* a, std::ptrdiff_t ld);
};
MATRIX_SELECT_KERNELS(EliminationKernels, elimination_kernels)

}  // namespace matrix_pack
