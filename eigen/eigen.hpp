// The handlers of the eigenproblem functions; those of `eigenvals` and `eigenvecs` are exported and
// stand in pack/exports.hpp. "(1)" behind a message is the number of the argument it is tied to,
// "(0)" the call.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// The eigenvector of unit length of a square matrix for the eigenvalue z, by inverse iteration.
// "must be array" (1), "non-scalar value" (2), "must be square" (1), "overflow" (0), "singularity"
// (0), "not converging" (0).
Anyval* eigenvec(EfiCallContext* context, Anyval* m, Anyval* z);

// The finite eigenvalues (eigenvectors of unit length) of M x = lambda N x for real square M and N,
// by the QZ method (Moler and Stewart 1973). Guarded. "must be array", "must be real", "must be
// square" (1, 2), "incompatible dimensions" (0), "may not be nested" (1, 2), "illegal TOL" (0)
// unless 0 < TOL <= 1, "no solution found" (0), "singularity" (0), "too many iterations" (0).
Anyval* genvals(EfiCallContext* context, Anyval* m, Anyval* n, Anyval* tolerance);
Anyval* genvecs(EfiCallContext* context, Anyval* m, Anyval* n, Anyval* tolerance);

}  // namespace matrix_pack
