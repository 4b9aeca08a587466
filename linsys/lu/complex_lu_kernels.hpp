// The inner loops of the complex LU factorization: as in linsys/lu/lu_kernels.hpp, with
// moduli (by the rules of cmodulus) for magnitudes. Of equal candidates, the first one is the
// pivot.
#pragma once

#include "linsys/lu/lu_kernels.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

struct ComplexLuKernels {
  Pivoting (*scale_rows)(Index n, const ConstComplexView& a, double* scale);
  Elimination (*eliminate)(Index n, const ComplexView& a, Index k0, Index k1, double* scale,
                           double* pivots, PivotTest* test);
  // A bound is a NaN when the modulus of an element of its row is out of range.
  void (*row_bounds)(Index n, const ConstComplexView& a, Index k0, Index k1, const double* scale,
                     double* bounds);
};
MATRIX_SELECT_KERNELS(ComplexLuKernels, complex_lu_kernels)

}  // namespace matrix_pack
