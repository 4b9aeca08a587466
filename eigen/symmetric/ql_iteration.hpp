// The implicit QL iteration on a symmetric tridiagonal matrix.
//
// Source: Martin and Wilkinson, "The implicit QL algorithm" (1968).
#pragma once

#include "pack/numeric/views.hpp"

namespace matrix_pack {

// Implicit QL iteration on the tridiagonal matrix (d, e).
//   d, e     as from tridiagonalize; on success d holds the eigenvalues, in no order
//   returns  null, or "too many iterations" when an eigenvalue takes more than 30 sweeps; d and e
//            are then of no use
//   cost     about 30 n^2 flops
const char* tridiagonal_ql(int n, double* d, double* e);

// The same; Z, n x n, is multiplied by the rotations, and its columns become the eigenvectors.
//   returns  also "out of memory"; Z is then of no use, nor after the other message
//   cost     about 6 n^3 flops, 64 n doubles of work
const char* tridiagonal_ql_with_vectors(int n, double* d, double* e, RealView z);

}  // namespace matrix_pack
