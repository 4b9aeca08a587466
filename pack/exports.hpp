// What the pack exports: the table and records that a host reads, and the entry points that it
// calls directly for its own operators.
#pragma once

#include "pack/host_interface.hpp"

// A name record: the string record and a fourth word of zero.
struct sName : sString {
  std::int32_t zero;
};

#pragma GCC visibility push(default)

// The function table and its row count. The rows are written while the library is loaded.
inline constexpr int kRowCount = 37;
extern FunctionEntry theEfi[kRowCount];
extern const std::int32_t numFuncs;

// The names of the rows. The stored lengths count the terminating NUL. The transpose operator and
// `diag` carry the host's own names.
extern sName string_rows, string_cols, string_identity, string_last, string_length, string_max,
    string_min, string_reverse, string_submatrix, string_tr, string_augment, string_stack,
    string_cond1, string_cond2, string_conde, string_condi, string_cholesky, string_eigenvals,
    string_eigenvecs, string_eigenvec, string_genvals, string_genvecs, string_geninv, string_lsolve,
    string_lu, string_norm1, string_norm2, string_norme, string_normi, string_qr, string_rank,
    string_rref, string_svd, string_svds, string_matrix;

// The worksheet variable TOL, and the context lists of the rows that ask for ORIGIN or TOL.
extern sName string_TOL;
extern const sIdentifier identifier_TOL;
extern const sCons TOLLIST;
extern sCons ORIGINLIST;

extern "C" {
// Enters the pack into the host's catalogue, or removes it; returns what the host returns, 0 on
// success.
std::int32_t DllRegisterServer();
std::int32_t DllUnregisterServer();
}

// Each returns a new value of the host's, or an error value; none modifies its argument.

// The n x n identity matrix; an integer below 1 gives an empty matrix.
Anyval* identity(EfiCallContext* context, int n);
// The same for a worksheet number: "must be integer", "domain error" (n <= 0), "size too large"
// (n > 100000), each tied to argument 1.
Anyval* identity(EfiCallContext* context, aComplex* n);

// The inverse of a square matrix, by LU factorization with the relative singularity test on.
// "illegal context" for a function value, "must be array" for other kinds than an array, else what
// the second form returns. Runs under the floating-point guard.
Anyval* inv(EfiCallContext* context, Anyval* value);
// "may not be nested", "must be square", "singular matrix", "out of memory", ..., tied to the call.
Anyval* inv(EfiCallContext* context, aMatrix* matrix);
// The inverse of a complex matrix to *inverse; null or a message. `relative_test` turns on the
// relative singularity test of the factorization.
const char* cinv(EfiCallContext* context, aMatrix* matrix, aMatrix** inverse, bool relative_test);

// The eigenvalues of a square matrix as a column; `tolerance` chops small parts of the eigenvalues
// of a complex matrix. The first form is the worksheet function's handler.
Anyval* eigenvals(EfiCallContext* context, Anyval* matrix, Anyval* tolerance);
Anyval* eigenvals(EfiCallContext* context, aMatrix* matrix, double tolerance);

// The eigenvectors, one a column, in the order of `eigenvals`. The first form is the worksheet
// function's handler.
Anyval* eigenvecs(EfiCallContext* context, Anyval* matrix);
Anyval* eigenvecs(EfiCallContext* context, aMatrix* matrix);

#pragma GCC visibility pop
