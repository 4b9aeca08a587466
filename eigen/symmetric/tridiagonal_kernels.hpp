// The inner loops of the Householder reduction of a symmetric matrix to tridiagonal form.
//
// Only the lower triangle of the matrix is read and written, down its columns.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

struct TridiagonalKernels {
  // Row i of A after the rank-two update: row[k] = A(i,k) - (u[i] e[k] + e[i] u[k]), k = 0..i, and
  // A(i,i) = row[i]. Without an update (u null), the row as it stands.
  void (*take_row)(Index i, RealView a, const double* u, const double* e, double* row);

  // The leading n x n block of A becomes A - (u e^T + e u^T), and p = A v for the new A. Without
  // u, A stays; without v, there is no product. Each p[j] is the sum of A(j,k) v[k], k = 0..j, in
  // ascending order, plus the sum of A(k,j) v[k], k = j+1..n-1, as eight partial sums by k mod 8.
  void (*update_and_multiply)(Index n, RealView a, const double* u, const double* e,
                              const double* v, double* p);

  // p becomes e = p/h - hh v with hh = (p/h)^T v / (h + h), the scalar product summed in ascending
  // order: with it, the reflection by v makes A - (v e^T + e v^T) of A.
  void (*finish_update)(Index n, double h, const double* v, double* p);

  // Rows and columns first..first+count-1 of the accumulated transformation, and what their
  // reflections do to the columns before them. On entry row i of A holds the vector u of reflection
  // i, column i holds u/h, and h[i] is 0 where there is no reflection. `work` has count * n
  // doubles.
  void (*accumulate)(Index first, Index count, RealView a, double* h, double* work);
};
MATRIX_SELECT_KERNELS(TridiagonalKernels, tridiagonal_kernels)

}  // namespace matrix_pack
