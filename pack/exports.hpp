// What the pack exports: the table and records that a host reads, and the entry points that it
// calls directly for its own operators.
#pragma once

#include "pack/host_interface.hpp"

// A name record: the string record and a fourth word of zero.
struct sName : sString {
  std::int32_t zero;  // 0
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

// Enters the pack into the host's catalogue, or removes it; returns what the host returns, 0 on
// success.
extern "C" std::int32_t DllRegisterServer();
extern "C" std::int32_t DllUnregisterServer();

// The entry points. Each gives a new value of the host's, or an error value, the ready-made one for
// exhausted memory included; none modifies its argument, and none throws. "(1)" behind a message is
// the argument it is tied to, "(0)" the call. Units are the host's business: see the unit rules in
// the table.

// The n x n identity matrix; 0 x 0 for n = 0. The value for exhausted memory when n is negative, or
// n^2 doubles are 2^32 bytes or more.
Anyval* identity(EfiCallContext* context, int n);
// The same for a worksheet number: "must be integer" (1), "domain error" (1) for n <= 0, "size too
// large" (1) for n > 100000.
Anyval* identity(EfiCallContext* context, aComplex* n);

// The inverse of a square matrix, real or complex, by LU factorization with scaled partial pivoting
// (Wilkinson, The Algebraic Eigenvalue Problem, 1965); a pivot that is tiny beside the growth of
// the elimination counts as zero. "illegal context" (1) for a function value, "must be array" (1)
// for other kinds than an array, else what the second form returns. Guarded: an arithmetic fault is
// an error value too.
Anyval* inv(EfiCallContext* context, Anyval* value);
// "may not be nested", "must be square", "singular matrix", "out of memory", and "Unknown error"
// for a matrix without part arrays, all (0). Not guarded.
Anyval* inv(EfiCallContext* context, aMatrix* matrix);
// The inverse of a complex matrix to *inverse, in which both part arrays exist; null or a message
// as above, "overflow" when a modulus exceeds 1e307. `relative_test` turns on the test for tiny
// pivots. After a message *inverse may hold a matrix of no use.
const char* cinv(EfiCallContext* context, aMatrix* matrix, aMatrix** inverse, bool relative_test);

// The eigenvalues of an n x n matrix as an n x 1 column, in the order in which the method finds
// them. `tolerance` is for complex matrices alone: smaller parts of eigenvalues become 0. "must be
// array" (0), "must be square" (1), "too many iterations" (0). Methods and sources:
// eigen/cores.hpp. The first form is the worksheet function's handler, guarded; `tolerance` is a
// scalar.
Anyval* eigenvals(EfiCallContext* context, Anyval* matrix, Anyval* tolerance);
Anyval* eigenvals(EfiCallContext* context, aMatrix* matrix, double tolerance);

// The eigenvectors of an n x n matrix as the columns of another, each of length 1, in the order of
// `eigenvals`; errors as there. The first form is the worksheet function's handler, guarded.
Anyval* eigenvecs(EfiCallContext* context, Anyval* matrix);
Anyval* eigenvecs(EfiCallContext* context, aMatrix* matrix);

#pragma GCC visibility pop
