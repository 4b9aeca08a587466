// Eigenvalues of a real upper Hessenberg matrix by the double-shift QR iteration.
//
// Source: Martin, Peters and Wilkinson, "The QR algorithm for real Hessenberg matrices" (1970);
// Peters and Wilkinson, "Eigenvectors of real and complex matrices by LR and QR triangularizations"
// (1970).
#pragma once

#include "eigen/shared/balance.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// Sum of the magnitudes of an upper Hessenberg matrix, without H(0,0). Kept: hosts rely on it.
double hessenberg_norm(int n, ConstRealView h);

// The eigenvalues of H.
//   H        n x n, upper Hessenberg in rows and columns low..high, quasi-triangular outside; what
//            stands below the subdiagonal is not read
//   wr, wi   n doubles each: the eigenvalues at their places on the diagonal; of a complex pair,
//            the one with the positive imaginary part first
//   returns  null, "out of memory", or "too many iterations" when one eigenvalue or pair takes more
//            than 40 sweeps; H, wr and wi are then of no use
//   cost     about 8 n^3 flops, 5 n doubles of work
//   method   rows are changed in columns up to the active block's end, columns from its beginning
const char* hessenberg_qr(const Balance& b, RealView h, double norm, double* wr, double* wi);

// The same on the whole of H, which becomes quasi-triangular; the columns of Z, rows low..high, are
// multiplied by all transformations.
//   cost     about 25 n^3 flops, 160 n doubles of work
const char* hessenberg_qr_with_vectors(const Balance& b, RealView h, double norm, double* wr,
                                       double* wi, RealView z);

}  // namespace matrix_pack
