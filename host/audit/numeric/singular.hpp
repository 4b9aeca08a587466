// Singular values and vectors by rotations of columns.
#pragma once

#include "host/audit/numeric/matrix.hpp"

namespace audit {

// A = U diag(s) Vᵀ for an m x n matrix A with m >= n: s descending, U m x n (its columns for values
// of 0 are zero), V n x n.
struct SingularForm {
  Matrix U, V;
  Vector s;
};

// One-sided Jacobi rotations (G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed., section
// 8.6.3). Small values come out with all digits that the columns, scaled, allow (J. Demmel, K.
// Veselić, Jacobi's method is more accurate than QR, 1992). Elements of A below about 1. Cost: some
// 8 sweeps of 6 m n² operations.
SingularForm singular_form(const Matrix& A, efi::StopFlag stop);

// The singular values alone, of a matrix of any shape.
Vector singular_values(const Matrix& A, efi::StopFlag stop);

// How many of the values, descending, exceed the largest times max(m, n) epsilon.
int numerical_rank(const Vector& s, int m, int n);

}  // namespace audit
