// The eigenvectors of a real quasi-triangular matrix, by back-substitution.
//
// Source: Peters and Wilkinson, "Eigenvectors of real and complex matrices by LR and QR
// triangularizations" (1970).
#pragma once

#include "pack/numeric/views.hpp"

namespace matrix_pack {

// The eigenvectors X of a real quasi-triangular matrix, in its place.
//   H        n x n; where wi[j] > 0 begins a 2x2 block. On return column j, rows 0..last[j], is the
//            vector of eigenvalue j, or for a pair its real part in column j and its imaginary part
//            in column j+1; the vector is that of the eigenvalue with the positive imaginary part
//   tiny     stands in for a divisor that is zero
//   last     n entries: the last row of each column of X
//   cost     n^3/3 flops
//   method   from the last eigenvalue to the first; as soon as a component is known, its multiple
//            of a column of H joins the right-hand sides above it
void quasi_triangular_vectors(int n, RealView h, const double* wr, const double* wi, double tiny,
                              Index* last);

}  // namespace matrix_pack
