// The singular value decomposition as svd and the generalized inverse use it.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// A = U diag(s) V^T, with s descending and column i of U and V belonging to s[i].
//   u        m x n, on entry A; on success U, whose columns are orthonormal
//   v, s     n x n and n x 1, on entry uninitialised; on success V, orthogonal, and s
//   returns  null, or "number of rows less than number of columns", "out of memory", "overflow",
//            "too many iterations"; all three matrices are then of no use
//   cost     about 6 m n^2 + 8 n^3 flops; n^2 + O(n) doubles of work
//   method   Householder bidiagonalization, then the implicit-shift QR iteration: Golub and
//            Reinsch, Handbook for Automatic Computation II (1971), contribution I/10
const char* svd_core(aMatrix* u, aMatrix* v, aMatrix* s);

}  // namespace matrix_pack
