// The inner loops of the unitary reduction of a complex matrix to Hessenberg form. Sums have the
// order of pack/numeric/vector_kernels.hpp.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// The reflection I - u u^H / h of rows and columns m..end-1; u is indexed by these numbers. w holds
// what it does to the rows: A - w u^H, for rows 0..end-1.
struct UnitaryReflection {
  Index m;
  Index end;
  double h;
  ComplexView u;
  ComplexView w;
};

struct UnitaryKernels {
  // Columns begin..end-1 of A, one after the other:
  //   A := A - w u^H of `before`, in the columns before->m..; none when it is null
  //   A := A - u f with f = u^H A / h of `now`, in rows m..now->end-1
  //   now->w := now->w + A(:,j) u[j], for the columns m..now->end-1
  // With `now` null only the first.
  void (*reflect)(const UnitaryReflection* before, const UnitaryReflection* now,
                  const ComplexView& a, Index begin, Index end);

  // Column j of Z, rows and columns counted alike, times `count` reflections, the last one first:
  // Z := Z - u f with f = u^H Z / h[k]. Reflection k starts at row first + k, its u is column
  // first + k - 1 of U and ends before row `end`; h[k] = 0: none.
  void (*accumulate)(const ConstComplexView& u, const double* h, Index first, Index count,
                     Index end, const ComplexView& z);
};
MATRIX_SELECT_KERNELS(UnitaryKernels, unitary_kernels)

}  // namespace matrix_pack
