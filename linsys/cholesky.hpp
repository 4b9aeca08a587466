// The Cholesky factorization, for cholesky and its tests.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// Lower Cholesky factor in place: A = L L^T, from the lower triangle and the diagonal.
//   a        n x n real working copy with a real array; on success L, zeros above the diagonal
//   returns  null, or "non-positive definite matrix" at the first pivot s <= 0: there is no
//            tolerance. A NaN is none of these: it goes on into the factor
//   cost     n^3 / 3 flops
//   method   s(i,j) = a(i,j) - l(i,0) l(j,0) - l(i,1) l(j,1) - ..., each in that order, whatever
//            the blocks; l(j,j) = sqrt(s(j,j)), l(i,j) = s(i,j) / l(j,j)
const char* cholesky_core(aMatrix* a);

// The same for an upper triangle packed by columns: element (i, j), i <= j, stands at j (j + 1) / 2
// + i of the column `packed`. Gives the upper triangular U with A = U U^T, packed, in *factor.
//   returns  null; "invalid dimensions" when the length is not n (n + 1) / 2; "non-positive
//            definite matrix" at a pivot <= 0, or when one to come has fallen below
//            sqrt(eps) times the largest magnitude in U so far; "out of memory"
//   method   columns of U from the last to the first
const char* cholesky_packed(EfiCallContext* context, const aMatrix* packed, int n,
                            aMatrix** factor);

}  // namespace matrix_pack
