// The handlers of the structural functions: query, build and rearrange without factorization.
//
// Every handler takes the call context and one value per declared argument, checks the arguments in
// order and returns a new value of the host's or an error value; the arguments stay as they are.
// "(1)" behind a message is the number of the argument it is tied to, "(0)" the call.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// Row and column count; 0 for a scalar. Others: "must be array" (1) with the value. Guarded.
Anyval* rows(EfiCallContext* context, Anyval* a);
Anyval* cols(EfiCallContext* context, Anyval* a);

// Index of the last element of a column: rows - 1 + ORIGIN. "must be vector" (1).
Anyval* last(EfiCallContext* context, Anyval* v, Anyval* origin);

// Number of elements of a column. "must be vector": (1) for a value that is no array, mark 1 and
// (0) for an array with several columns.
Anyval* length(EfiCallContext* context, Anyval* v);

// Largest (smallest) real part and, apart from it, largest (smallest) imaginary part. `max` takes
// every NaN and lets every element displace one, `min` never takes a NaN. "must be array" (1),
// "may not be nested" (1).
Anyval* max(EfiCallContext* context, Anyval* a);
Anyval* min(EfiCallContext* context, Anyval* a);

// n x n identity matrix. "non-scalar value" (1), then as the exported ::identity.
Anyval* identity(EfiCallContext* context, Anyval* n);

// Square matrix with the column v on its diagonal. "must be vector" (1).
Anyval* diag(EfiCallContext* context, Anyval* v);

// A and B side by side, A above B. "must be array" (1, 2), "array size mismatch" (2).
Anyval* augment(EfiCallContext* context, Anyval* a, Anyval* b);
Anyval* stack(EfiCallContext* context, Anyval* a, Anyval* b);

// A with its rows in reverse order; a matrix of one row is returned itself, one without part arrays
// as null. "must be array" (1).
Anyval* reverse(EfiCallContext* context, Anyval* a);

// The plain transpose: imaginary parts keep their signs. "must be array" (1).
Anyval* transpose(EfiCallContext* context, Anyval* a);

// Sum of the diagonal of a square array. "must be array" (1), "must be square" (1). Guarded.
Anyval* tr(EfiCallContext* context, Anyval* a);

// The block of A between rows ir and jr and columns ic and jc, inclusive, counted from ORIGIN; a
// first bound above the second takes the rows (columns) in descending order. Guarded.
// "must be array" (1), "non-scalar value", "must be real", "integer too large",
// "invalid dimension" (2 to 5), "invalid index", "upper index out of bounds" (0).
Anyval* submatrix(EfiCallContext* context, Anyval* a, Anyval* ir, Anyval* jr, Anyval* ic,
                  Anyval* jc, Anyval* origin);

// The m x n matrix of f(i, j), i and j counted from 0 whatever ORIGIN is; f is called row by row,
// and once more for (0, 0) at the start. An error value that f returns is the result. "non-scalar
// value" (1, 2; 3 for a value of f), "must be function" (3), "must be real" (1, 2), "must be
// positive" (1), "incorrect column dimensions" (1), "must be integer" (1, 2), "size too large" (1,
// 2, 0).
Anyval* matrix(EfiCallContext* context, Anyval* m, Anyval* n, Anyval* f);

}  // namespace matrix_pack
