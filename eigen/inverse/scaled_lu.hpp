// LU factorization of a complex matrix with implicit row scaling, and the solution with the
// factors.
#pragma once

#include "pack/numeric/views.hpp"

namespace matrix_pack {

// What becomes of an inverse iteration and its parts.
enum class Status { done = 0, singular = 1, not_converging = 2, interrupted = 3, no_memory = 10 };

// P A = L U in place: L unit lower, U upper triangular.
//   A         n x n complex
//   pivots    n entries: the row that was exchanged with row j in step j
//   returns   done, singular when a row is zero, or no_memory
//   cost      8/3 n^3 flops, n doubles of work
//   method    Crout's order, column by column. The pivot has the largest modulus relative to the
//             largest in its row of A, of equal ones the last; a zero pivot becomes 1e-20
//   source    Crout (1941); Wilkinson, "The Algebraic Eigenvalue Problem" (1965)
Status factor_scaled(int n, const ComplexView& a, int* pivots);

// The solution x of A x = b with these factors, in place of b. not_converging when U has a zero on
// its diagonal.
Status solve_factored(int n, const ComplexView& a, const int* pivots, const ComplexView& b);

}  // namespace matrix_pack
