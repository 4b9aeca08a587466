// LU factorization of a square array in place, real or complex: P A = L U.
//
// Right-looking elimination with implicitly scaled partial pivoting. Large matrices are taken in
// panels: a panel of columns is eliminated by splitting it in two, then the rows of U beside it are
// completed, then its product is taken off the rest. Every element sees the operations of
// elimination one column at a time, in their order, and every decision the same values. Where
// several failures are due (say a singular pivot and an overflow further right), another one of
// them may be the first to be met: factor_copy asks the plain algorithm.
//   cost     2 n^3 / 3 flops (complex: four times that)
//   source   Wilkinson, The Algebraic Eigenvalue Problem (1965), for the scaled pivoting;
//            Toledo, Locality of reference in LU decomposition with partial pivoting,
//            SIAM J. Matrix Anal. Appl. 18 (1997), for the splitting
#pragma once

#include <limits>

#include "linsys/lu/complex_lu_kernels.hpp"
#include "linsys/lu/lu_kernels.hpp"
#include "linsys/lu/triangular.hpp"
#include "linsys/product_kernels.hpp"
#include "pack/numeric/complex_arithmetic.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// Matrices up to this order are eliminated by single columns, which is faster.
inline constexpr Index kSmallOrder = 64;
// Columns of a panel, and of the parts that it is split into. Measured.
inline constexpr Index kPanel = 64;
inline constexpr Index kNarrowPanel = 16;
// Columns beside a panel that are completed and updated while the cache holds them.
inline constexpr Index kStrip = 32;

template <class View>
struct Factoring {
  Index n;
  View a;          // n x n: becomes L (unit diagonal implied) and U.
  double* scale;   // n doubles.
  double* pivots;  // n doubles: the row exchanged with row k at step k, counted from 0.
  double* bounds;  // kPanel doubles.
  PivotTest test;
};

// --- The steps, real and complex. ---

inline const LuKernels& kernels_for(RealView) {
  return lu_kernels();
}
inline const ComplexLuKernels& kernels_for(ComplexView) {
  return complex_lu_kernels();
}

inline double element_size(RealView a, Index i, Index j) {
  return __builtin_fabs(a(i, j));
}
inline double element_size(const ComplexView& a, Index i, Index j) {
  return cmodulus(a(i, j));
}

// Makes the row exchanges k0 to k1 - 1 in the columns j0 to j1 - 1.
inline void exchange_rows(const Factoring<RealView>& f, Index k0, Index k1, Index j0, Index j1) {
  lu_kernels().exchange_rows(j1 - j0, f.a.from(0, j0), k0, k1, f.pivots);
}
inline void exchange_rows(const Factoring<ComplexView>& f, Index k0, Index k1, Index j0, Index j1) {
  const ComplexView a = f.a.column(j0);
  lu_kernels().exchange_rows(j1 - j0, {a.re, a.ld}, k0, k1, f.pivots);
  lu_kernels().exchange_rows(j1 - j0, {a.im, a.ld}, k0, k1, f.pivots);
}

// --- The algorithm. ---

// In the columns j0 to j1 - 1: completes the rows k0 to k1 - 1 of U.
template <class View>
void complete_rows(const Factoring<View>& f, Index k0, Index k1, Index j0, Index j1) {
  exchange_rows(f, k0, k1, j0, j1);
  solve_lower(k1 - k0, f.a.from(k0, k0), j1 - j0, f.a.from(k0, j0));
}

// In the columns j0 to j1 - 1: rows k1... := rows k1... - L(k1..., k0 to k1 - 1) U(k0 to k1 - 1).
template <class View>
void update_rest(const Factoring<View>& f, Index k0, Index k1, Index j0, Index j1) {
  subtract_product(f.n - k1, j1 - j0, k1 - k0, f.a.from(k1, k0), f.a.from(k0, j0), 1,
                   f.a.from(k1, j0));
}

// Eliminates the columns k0 to k1 - 1 of the rows k0 to n - 1.
template <class View>
Elimination eliminate_panel(const Factoring<View>& f, Index k0, Index k1) {
  if (k1 - k0 <= kNarrowPanel)
    return kernels_for(f.a).eliminate(f.n, f.a, k0, k1, f.scale, f.pivots, nullptr);
  const Index mid = k0 + (k1 - k0 + kNarrowPanel) / 2 / kNarrowPanel * kNarrowPanel;
  const Elimination left = eliminate_panel(f, k0, mid);
  if (left.outcome != Pivoting::done) return left;
  complete_rows(f, k0, mid, mid, k1);
  update_rest(f, k0, mid, mid, k1);
  const Elimination right = eliminate_panel(f, mid, k1);
  exchange_rows(f, mid, mid + right.columns, k0, mid);
  return {mid - k0 + right.columns, right.outcome};
}

// Tests the pivots k0 to k1 - 1. The bound of a row counts from the next pivot on: *above is that
// of row k0 - 1 and becomes that of row k1 - 1.
template <class View>
Pivoting test_pivots(Factoring<View>& f, Index k0, Index k1, double* above) {
  kernels_for(f.a).row_bounds(f.n, f.a, k0, k1, f.scale, f.bounds);
  for (Index k = k0; k < k1; ++k) {
    if (*above != *above) return Pivoting::modulus_overflow;
    take_row(f.test, *above);
    if (!passes(f.test, element_size(f.a, k, k))) return Pivoting::zero_pivot;
    *above = f.bounds[k - k0];
  }
  return Pivoting::done;
}

template <class View>
Pivoting eliminate_by_panels(Factoring<View>& f) {
  double above = 0.0;
  for (Index k0 = 0; k0 < f.n; k0 += kPanel) {
    const Index k1 = f.n - k0 < kPanel ? f.n : k0 + kPanel;
    const Elimination panel = eliminate_panel(f, k0, k1);
    const Index end = k0 + panel.columns;
    for (Index j = k1; j < f.n; j += kStrip) {
      const Index j1 = f.n - j < kStrip ? f.n : j + kStrip;
      complete_rows(f, k0, end, j, j1);
      if (end == k1) update_rest(f, k0, k1, j, j1);
    }
    const Pivoting tested = test_pivots(f, k0, end, &above);
    if (tested != Pivoting::done) return tested;
    if (panel.outcome != Pivoting::done) return panel.outcome;
  }
  // Nothing has read the columns before a panel since: their rows are exchanged in one go.
  for (Index k1 = kPanel; k1 < f.n; k1 += kPanel) exchange_rows(f, k1, f.n, k1 - kPanel, k1);
  return Pivoting::done;
}

template <class View>
Pivoting eliminate(Factoring<View>& f) {
  const auto& kernels = kernels_for(f.a);
  const Pivoting scaled = kernels.scale_rows(f.n, f.a, f.scale);
  if (scaled != Pivoting::done) return scaled;
  if (f.n > kSmallOrder) return eliminate_by_panels(f);
  return kernels.eliminate(f.n, f.a, 0, f.n, f.scale, f.pivots, &f.test).outcome;
}

}  // namespace matrix_pack
