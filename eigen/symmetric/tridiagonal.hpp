// Householder reduction of a symmetric matrix to tridiagonal form.
//
// Source: Martin, Reinsch and Wilkinson, "Householder's tridiagonalization of a symmetric matrix"
// (1968).
#pragma once

#include "pack/numeric/views.hpp"

namespace matrix_pack {

// The tridiagonal form of a symmetric matrix.
//   A        n x n, of which the lower triangle is read; overwritten
//   d, e     n doubles each: the diagonal, and the subdiagonal in e[1..n-1] (e[0] = 0)
//   returns  null or "out of memory"
//   cost     4/3 n^3 flops, 4 n doubles of work
//   method   for i = n-1 down to 1, a reflection by v = row i of the lower triangle, scaled by the
//            sum of its magnitudes, clears the row left of the subdiagonal:
//            A := A - (v e^T + e v^T), e = p - hh v, p = A v / h. The update of the triangle waits
//            for the next product, so that each step passes over the triangle once.
const char* tridiagonalize(int n, RealView a, double* d, double* e);

// The same; A becomes the orthogonal Q with Q^T A Q tridiagonal.
//   cost     8/3 n^3 flops, 8 n doubles of work
const char* tridiagonalize_with_vectors(int n, RealView a, double* d, double* e);

}  // namespace matrix_pack
