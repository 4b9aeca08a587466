// The QR decomposition by plane rotations, for qr and its tests.
#pragma once

#include "linsys/givens.hpp"
#include "pack/host_interface.hpp"

namespace matrix_pack {

// A = Q R for a real m x n matrix A of any shape; A stays as it is.
//   q        a new m x m orthogonal matrix
//   r        a new m x n matrix, upper triangular; where A is rank-deficient, a staircase
//   returns  null, "out of memory", or the message of a copy that failed
//   cost     3 m^2 n + 3 m n^2 - 2 n^3 flops for m >= n, and as much again for Q
//   method   the elements below the pivot row p are cleared from the bottom up (Golub and Van Loan,
//            Matrix Computations, section 5.2). In column c (from 1) elements up to
//            c |column| eps / sqrt(m - p) are negligible: they take no rotation, and a column with
//            nothing else takes no pivot row. The norm is not scaled
// The zeros that a column leaves behind take no further part in rotations, but for one that is not
// a number. A column whose norm vanishes by underflow is left as it is, and rotated
// like the others.
const char* qr_core(EfiCallContext* context, aMatrix* a, aMatrix** q, aMatrix** r);

}  // namespace matrix_pack
