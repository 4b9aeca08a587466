// Forward and back substitution for one right-hand side, with the factors of ludecomp.
//
//   forward  x_i = b_i - L(i,first) x_first - ... - L(i,i-1) x_(i-1), one product after the other,
//            in ascending order; b_first is the first element that is not zero
//   back     x_i = (x_i - U(i,i+1) x_(i+1) - ... - U(i,n-1) x_(n-1)) / U(i,i), one product after
//            the other, in ascending order
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// Solves L U x = P b in place for a factorization made by ludecomp.
//   b        n x 1; the real array is used
//   returns  null, "Unknown error" (something absent), "invalid dimension" or "must be square"
//   cost     2 n^2 flops
const char* lubacksub(const aMatrix* lu, const double* pivots, aMatrix* b);

// The same for cludecomp; absent part arrays stand for zeros, in b they are created when needed.
//   returns  null, "invalid dimension", "must be square", "array size mismatch", "out of memory",
//            or "singular matrix" (a zero on U's diagonal)
const char* clubacksub(aMatrix* lu, const double* pivots, aMatrix* b);

}  // namespace matrix_pack
