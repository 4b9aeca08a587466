// The handlers of the singular value functions, for real matrices with at least as many rows as
// columns. "must be array" (1), "must be real" (1); the messages of the cores are tied to the call.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// U (m x n, orthonormal columns) and V (n x n, orthogonal), joined, with A = U diag(s) V^T.
// Guarded.
Anyval* svd(EfiCallContext* context, Anyval* a);

// The singular values, descending, as a column.
Anyval* svds(EfiCallContext* context, Anyval* a);

}  // namespace matrix_pack
