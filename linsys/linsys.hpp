// The handlers of the linear-systems functions. "(1)" behind a message is the number of the
// argument it is tied to, "(0)" the call. Every handler leaves its arguments as they are.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// P, L and U, joined, with P M = L U for a square M; no relative singularity test.
// "must be array" (0), "must be square" (1 when wide, 0 when tall), "singular matrix" (0).
Anyval* lu(EfiCallContext* context, Anyval* m);

// The solution x of M x = v. "must be array" (1), "must be vector" (2), "must be square" (1),
// "incompatible dimension" (mark 2, 0), "singular matrix" (0).
Anyval* lsolve(EfiCallContext* context, Anyval* m, Anyval* v);

// The lower triangular L with L L^T = M, M given by its upper triangle and diagonal.
// "must be array" (1), "must be square" (1), "must be real" (1), "non-positive definite matrix"
// (0).
Anyval* cholesky(EfiCallContext* context, Anyval* m);

// Q (m x m, orthogonal) and R (m x n), joined, with A = Q R. "must be array" (1), "must be real"
// (1).
Anyval* qr(EfiCallContext* context, Anyval* a);

// Reduced row echelon form of the real part. "must be array" (1), "must be real" (1) when A is
// purely imaginary, "may not be nested" (1).
Anyval* rref(EfiCallContext* context, Anyval* a);

// Number of singular values above max(rows, cols) eps times the largest. "must be array" (1),
// "must be real" (1), the messages of svds_core (0).
Anyval* rank(EfiCallContext* context, Anyval* a);

// The generalized inverse of a real matrix with at least as many rows as columns; singular values
// up to TOL (absolute) count as zero. "must be array" (0), "must be real" (1), the messages of
// svd_core (0).
Anyval* geninv(EfiCallContext* context, Anyval* a, Anyval* tolerance);

}  // namespace matrix_pack
