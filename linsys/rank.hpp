// The numerical rank, as rank and the generalized eigenproblem use it.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// The number of singular values of A above max(rows, cols) eps times the largest, as a new scalar;
// or an error value: "must be real" (1), a message of the copy or of svds_core (0).
//   cost     that of svds_core, on the transpose of a wide matrix
Anyval* rank_worker(EfiCallContext* context, aMatrix* a);

}  // namespace matrix_pack
