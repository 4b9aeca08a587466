// The LU factorizations that the linear-systems functions and the condition numbers rest on.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// P A = L U by elimination with scaled partial pivoting.
//   a        n x n working copy; the real array is used. Becomes U on and above the diagonal, L's
//            multipliers below it (unit diagonal implied), in the row order of the pivoting
//   pivots   n doubles or null: the row exchanged into row k at step k, counted from 0
//   sign     +1 or -1: the sign of that permutation
//   relative_test   also refuses a pivot below 2^-52 times the growth of the elimination
//   returns  null, "PPnullPtr" (no real array), "invalid dimension", "must be square",
//            "out of memory", or "singular matrix" for a zero row, a zero pivot, or one refused
// Of equal pivot candidates the last row wins: documented. On failure pivots may hold anything.
const char* ludecomp(aMatrix* a, double* pivots, double* sign, bool relative_test);

// The same for a complex matrix, an absent part array standing for zeros. Three differences are
// deliberate: the pivots are counted from 1, the first of equal candidates wins, and the relative
// test compares with 2^-104. Throws SE_FPEOverflow_Exception when a modulus exceeds 1e307.
const char* cludecomp(aMatrix* a, double* pivots, double* sign, bool relative_test);

// The factors of m in `lu`, a copy of it, by cludecomp if `complex`, else by ludecomp. They tell
// the first failure that they meet; here it is the one that is due first, as by plain elimination.
const char* factor_copy(const aMatrix* m, aMatrix* lu, bool complex, double* pivots,
                        bool relative_test);

}  // namespace matrix_pack
