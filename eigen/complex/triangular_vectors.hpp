// The eigenvectors of a complex upper triangular matrix, by back-substitution.
//
// Source: Peters and Wilkinson, "Eigenvectors of real and complex matrices by LR and QR
// triangularizations" (1970).
#pragma once

#include "pack/numeric/views.hpp"

namespace matrix_pack {

// The eigenvectors X of an upper triangular matrix, in its place.
//   H        n x n, with the eigenvalues on its diagonal. On return column j, rows 0..last[j] with
//            last[j] = j, is the vector of eigenvalue j
//   tiny     stands in for a divisor that is zero
//   cost     4/3 n^3 flops
//   method   from the last eigenvalue to the first; as soon as a component is known, its multiple
//            of a column of H joins the right-hand sides above it
void triangular_vectors(int n, const ComplexView& h, double tiny, Index* last);

}  // namespace matrix_pack
