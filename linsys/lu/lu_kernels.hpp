// The inner loops of the real LU factorization, and what both factorizations share.
//
// `a` is the whole n x n matrix; pivot indices are counted from 0.
#pragma once

#include "linsys/lu/pivot_test.hpp"
#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

enum class Pivoting {
  done,
  zero_pivot,        // A zero row, a zero pivot, or one that fails the relative test.
  modulus_overflow,  // The modulus of an element is out of range: cmodulus would throw.
};

// How far an elimination came: columns whose pivot was taken, and why it went no further.
struct Elimination {
  Index columns;
  Pivoting outcome;
};

struct LuKernels {
  // scale[i] = 1 / largest |a(i,j)| of row i, unless a row is zero. Faults come in the order of the
  // rows, as a zero row does.
  Pivoting (*scale_rows)(Index n, ConstRealView a, double* scale);

  // Eliminates columns k0 to k1 - 1 of rows k0 to n - 1, one at a time, right-looking. The pivot is
  // the candidate with the largest |a(i,k)| scale[i], the last of equal ones. Rows are exchanged
  // within these columns only: row k goes to pivots[k] with its scale. That of the row that comes
  // is no longer needed: scale[k] becomes the growth bound of column k, its largest multiplier
  // or 1. With a `test`, these must be all columns of the matrix.
  Elimination (*eliminate)(Index n, RealView a, Index k0, Index k1, double* scale, double* pivots,
                           PivotTest* test);

  // bounds[i - k0] = largest |u(i,j)| scale[i] over j >= i, for the rows i = k0 to k1 - 1 of U.
  void (*row_bounds)(Index n, ConstRealView a, Index k0, Index k1, const double* scale,
                     double* bounds);

  // Makes the row exchanges k0 to k1 - 1 in `cols` columns.
  void (*exchange_rows)(Index cols, RealView a, Index k0, Index k1, const double* pivots);
};
MATRIX_SELECT_KERNELS(LuKernels, lu_kernels)

}  // namespace matrix_pack
