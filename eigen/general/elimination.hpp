// Reduction of a general real matrix to upper Hessenberg form by stabilised elimination.
//
// Source: Martin and Wilkinson, "Similarity reduction of a general matrix to Hessenberg form"
// (1968).
#pragma once

#include <cstdint>

#include "eigen/shared/balance.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// What the elimination works on besides A.
//   pivots   high entries: the row that step m exchanged with row m, as a double, at [m]
//   runs     n+1 entries of work
struct EliminationWork {
  double* pivots;
  Index* runs;
};

// A becomes upper Hessenberg: rows and columns low..high, the rest stays quasi-triangular.
//   A        real and balanced; the multipliers stay below the subdiagonal
//   cost     5/3 n^3 flops
//   method   for m = low+1..high-1, the first largest of A(m..high, m-1) comes to row m, and its
//            multiples clear the rest of the column: row i := row i - y_i row m,
//            column m := column m + y_i column i, for i = m+1..high in this order
void eliminate_to_hessenberg(RealView a, const Balance& b, const EliminationWork& work);

// Z, the identity on entry, becomes the product of the eliminations' transformations: the original
// matrix times Z is Z times the Hessenberg matrix.
void accumulate_eliminations(ConstRealView a, const Balance& b, const double* pivots, RealView z);

}  // namespace matrix_pack
