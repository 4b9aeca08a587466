// The norms of a square matrix as the norm functions, the condition numbers and rref use them.
//
// The real cores read the real array alone, the complex cores both arrays; a missing array is zero.
// Each core puts the norm into *norm and returns null or a message. Matrices are n x n; the real
// and complex cores of the 1-norm and the infinity norm say "must be square" otherwise.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// A norm of a matrix that it does not change.
using NormCore = const char* (*)(const aMatrix* a, double* norm);

// The largest column sum (row sum) of magnitudes, each added up from its first element to its last;
// a NaN is never the largest. Complex magnitudes are scaled: max sqrt((min / max)^2 + 1).
const char* norm1_real(const aMatrix* a, double* norm);
const char* norm1_complex(const aMatrix* a, double* norm);
const char* normi_real(const aMatrix* a, double* norm);
const char* normi_complex(const aMatrix* a, double* norm);
// That of the two which the matrix asks for, at the beginning of a guarded body.
const char* normi_guarded(const aMatrix* a, double* norm);

// The root of the sum of squares, added up column by column, without scaling: kept, so large
// elements overflow.
const char* norme_real(const aMatrix* a, double* norm);
const char* norme_complex(const aMatrix* a, double* norm);

// The largest singular value; `a` is overwritten. The messages of svds_core.
const char* norm2_real(aMatrix* a, double* norm);

// The root of the eigenvalue of A^H A that is largest in magnitude. "out of memory", or a message
// of hermitian_eigenvalues.
const char* norm2_complex(const aMatrix* a, double* norm);

}  // namespace matrix_pack
