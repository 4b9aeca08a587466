// The inner loops of the complex LU factorization: as in linsys/lu/elimination_kernels.hpp, with
// moduli (by the rules of cmodulus) for magnitudes. Of equal candidates, the first one is the
// pivot.
#pragma once

#include "linsys/lu/elimination_kernels.hpp"

namespace matrix_pack {

struct ComplexLuKernels {
  Pivoting (*scale_rows)(Index n, ConstSplit a, Index ld, double* scale);
  Elimination (*eliminate)(Index n, Split a, Index ld, Index k0, Index k1, double* scale,
                           double* pivots, PivotTest* test);
  // A bound is a NaN when the modulus of an element of its row is out of range.
  void (*row_bounds)(Index n, ConstSplit a, Index ld, Index k0, Index k1, const double* scale,
                     double* bounds);
};
MATRIX_SELECT_KERNELS(ComplexLuKernels, complex_lu_kernels)

}  // namespace matrix_pack
