// The handlers of the norms and condition numbers of a square matrix, real or complex.
// "(1)" behind a message is the number of the argument it is tied to, "(0)" the call.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// Largest column sum, spectral norm, Frobenius norm, largest row sum.
// "must be array" (1), "must be square" (1). norme and normi are guarded.
Anyval* norm1(EfiCallContext* context, Anyval* a);
Anyval* norm2(EfiCallContext* context, Anyval* a);
Anyval* norme(EfiCallContext* context, Anyval* a);
Anyval* normi(EfiCallContext* context, Anyval* a);

// Norm of A times norm of its inverse; cond2 of a real matrix is the ratio of the extreme singular
// values. "must be array" (0), "must be square" (1; cond1: mark 1 and 0), "singular matrix" (0).
// cond2, conde and condi are guarded.
Anyval* cond1(EfiCallContext* context, Anyval* a);
Anyval* cond2(EfiCallContext* context, Anyval* a);
Anyval* conde(EfiCallContext* context, Anyval* a);
Anyval* condi(EfiCallContext* context, Anyval* a);

}  // namespace matrix_pack
