// Eigenvalues of a complex upper Hessenberg matrix by the single-shift QR iteration.
//
// Source: the complex QR iteration of Martin and Wilkinson, "The modified LR algorithm for complex
// Hessenberg matrices" (1968), with rotations in place of elimination; Peters and Wilkinson,
// "Eigenvectors of real and complex matrices by LR and QR triangularizations" (1970).
#pragma once

#include <cstddef>

#include "eigen/shared/balance.hpp"

namespace matrix_pack {

// Sweeps that one eigenvalue may take. The vectors allow one less: kept, hosts rely on it.
inline constexpr int kMostSweepsForValues = 31;
inline constexpr int kMostSweepsForVectors = 30;

// The eigenvalues of H.
//   H          n x n, upper Hessenberg in rows and columns low..high, triangular outside; what
//              stands below the subdiagonal is not read
//   tolerance  parts of eigenvalues found by the iteration that are smaller become 0
//   wr, wi     n doubles each: the eigenvalues at their places on the diagonal
//   returns    null, "out of memory", or "too many iterations" when one eigenvalue takes more than
//              `most_sweeps`; H, wr and wi are then of no use
//   cost       about 40 n^3 flops, 3 n doubles of work
//   method     rows are changed in columns up to the active block's end, columns from its beginning
const char* complex_qr(const Balance& b, const ComplexView& h, double tolerance, int most_sweeps,
                       double* wr, double* wi);

// The same on the whole of H, which becomes triangular with the eigenvalues on its diagonal; the
// columns of Z, rows low..high, are multiplied by all transformations.
//   cost       about 100 n^3 flops, 48 n doubles of work
const char* complex_qr_with_vectors(const Balance& b, const ComplexView& h, int most_sweeps,
                                    double* wr, double* wi, const ComplexView& z);

}  // namespace matrix_pack
