// The drivers of the QZ method that `genvals` and `genvecs` share. Method: see eigen/qz/stages.hpp.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// The finite eigenvalues of A x = lambda B x to *values, a *count x 1 matrix with real and
// imaginary array; no matrix when there is none. A and B are working copies and are overwritten. An
// infinite eigenvalue (beta = 0) is left out; one that any number solves (alpha = beta = 0) is
// listed as 0.
//   returns  null, "invalid dimension", "must be square", "array size mismatch", "out of memory" or
//            "too many iterations": what has been stored is then of no use
//   cost     about 25 n^3 flops; with vectors about 50 n^3
const char* genvals_driver(EfiCallContext* context, aMatrix* a, aMatrix* b, aMatrix** values,
                           int* count);

// The same, and the eigenvectors to the columns of *vectors, which has an imaginary array when an
// eigenvalue listed is complex.
const char* genvecs_driver(EfiCallContext* context, aMatrix* a, aMatrix* b, aMatrix** values,
                           aMatrix** vectors, int* count);

}  // namespace matrix_pack
