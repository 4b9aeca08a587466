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

// The finite eigenvalues (eigenvectors) of M x = lambda N x for real square M and N. Guarded.
Anyval* genvals(EfiCallContext* context, Anyval* m, Anyval* n, Anyval* tolerance);
Anyval* genvecs(EfiCallContext* context, Anyval* m, Anyval* n, Anyval* tolerance);

}  // namespace matrix_pack
