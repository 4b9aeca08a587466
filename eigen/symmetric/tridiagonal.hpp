// Symmetric matrices: the reduction to tridiagonal form, and the QL iteration on it.
//
// Source: Martin, Reinsch and Wilkinson, "Householder's tridiagonalization of a symmetric matrix"
// (1968); Martin and Wilkinson, "The implicit QL algorithm" (1968).
#pragma once

#include <cstddef>

namespace matrix_pack {

// Householder reduction of a symmetric matrix to tridiagonal form.
//   A        n x n, of which the lower triangle is read; overwritten
//   d, e     n doubles each: the diagonal, and the subdiagonal in e[1..n-1] (e[0] = 0)
//   returns  null or "out of memory"
//   cost     4/3 n^3 flops, 4 n doubles of work
//   method   for i = n-1 down to 1, a reflection by v = row i of the lower triangle, scaled by the
//            sum of its magnitudes, clears the row left of the subdiagonal:
//            A := A - (v e^T + e v^T), e = p - hh v, p = A v / h. The update of the triangle waits
//            for the next product, so that each step passes over the triangle once.
const char* tridiagonalize(double* a, std::ptrdiff_t ld, int n, double* d, double* e);

// The same; A becomes the orthogonal Q with Q^T A Q tridiagonal.
//   cost     8/3 n^3 flops, 8 n doubles of work
const char* tridiagonalize_with_vectors(double* a, std::ptrdiff_t ld, int n, double* d, double* e);

// Implicit QL iteration on the tridiagonal matrix (d, e).
//   d, e     as from tridiagonalize; on success d holds the eigenvalues, in no order
//   returns  null, or "too many iterations" when an eigenvalue takes more than 30 sweeps
//   cost     about 30 n^2 flops
const char* tridiagonal_ql(double* d, double* e, int n);

// The same; Z, n x n, is multiplied by the rotations, and its columns become the eigenvectors.
//   returns  also "out of memory"
//   cost     about 6 n^3 flops, 64 n doubles of work
const char* tridiagonal_ql_with_vectors(double* d, double* e, int n, double* z, std::ptrdiff_t ld);

}  // namespace matrix_pack
