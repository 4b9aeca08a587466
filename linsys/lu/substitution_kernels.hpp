// Solving with small triangles and many right-hand sides, and with a whole triangle and one.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// The largest triangle that solve_lower takes.
inline constexpr Index kTriangle = 16;

// Columns, real or complex, that solve_upper takes side by side where vectors are widest.
inline constexpr Index kUpperColumns = 64;
// Doubles of work that it needs for a triangle of order n, those before the beginning of a cache
// line included. (Those of a small one stand on the stack.)
constexpr Index upper_work(Index n) {
  return n <= kTriangle ? 0 : kUpperColumns * n + 8;
}

struct SubstitutionKernels {
  // X := L^-1 X for the unit lower triangle of the n x n array l; X is n x cols. Element x_i sees
  //   ((x_i - l(i,0) x_0) - l(i,1) x_1) - ... - l(i,i-1) x_(i-1).
  void (*solve_lower)(Index n, ConstRealView l, Index cols, RealView x);
  // X := U^-1 X for the upper triangle of u, of any order. Element x_i sees
  //   (((x_i - u(i,i+1) x_(i+1)) - u(i,i+2) x_(i+2)) - ... - u(i,n-1) x_(n-1)) / u(i,i).
  // (The first product needs x_(i+1) whole: rows cannot be taken together, columns of X can.)
  void (*solve_upper)(Index n, ConstRealView u, Index cols, RealView x, double* work);

  // The same two for one right-hand side and any order.
  void (*forward)(Index n, ConstRealView l, double* x);
  void (*backward)(Index n, ConstRealView u, double* x);

  // Whether the strict lower triangle holds neither infinities nor NaNs.
  bool (*is_finite_below_diagonal)(Index n, ConstRealView a);
};
MATRIX_SELECT_KERNELS(SubstitutionKernels, substitution_kernels)

// The same for complex matrices; divisions are Smith's.
struct ComplexSubstitutionKernels {
  void (*solve_lower)(Index n, const ConstComplexView& l, Index cols, const ComplexView& x);
  void (*solve_upper)(Index n, const ConstComplexView& u, Index cols, const ComplexView& x,
                      double* work);
  void (*forward)(Index n, const ConstComplexView& l, const ComplexView& x);
  void (*backward)(Index n, const ConstComplexView& u, const ComplexView& x);
};
MATRIX_SELECT_KERNELS(ComplexSubstitutionKernels, complex_substitution_kernels)

}  // namespace matrix_pack
