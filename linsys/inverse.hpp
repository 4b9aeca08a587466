// The inverse of a square matrix, from its LU factorization.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// Stores a new n x n matrix, the inverse of m, in *inverse (also when it fails later on).
//   m        real array used
//   relative_test   of the factorization: refuses a pivot that is tiny beside the growth
//   returns  null, "Unknown error" (no real array), "invalid dimension", "must be square",
//            "out of memory", "singular matrix", or a message of the copy
//   cost     2 n^3 flops
const char* inv_core(EfiCallContext* context, aMatrix* m, aMatrix** inverse, bool relative_test);

// The same for a complex matrix; an absent part array stands for zeros. The inverse has both parts.
// Throws SE_FPEOverflow_Exception when a modulus exceeds 1e307.
const char* cinv_core(EfiCallContext* context, aMatrix* m, aMatrix** inverse, bool relative_test);

}  // namespace matrix_pack
