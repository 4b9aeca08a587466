// Eigenvectors of triangular and quasi-triangular matrices by back-substitution, and their way back
// to the matrix that these came from.
//
// Source: Peters and Wilkinson, "Eigenvectors of real and complex matrices by LR and QR
// triangularizations" (1970).
#pragma once

#include <cstddef>

#include "eigen/shared/balance.hpp"

namespace matrix_pack {

// A vector component that grows beyond this has its whole vector multiplied by kShrink: the vectors
// of defective matrices grow without bound. Both are powers of two: nothing is rounded.
inline constexpr double kGrown = 0x1p+256;
inline constexpr double kShrink = 0x1p-256;

// The eigenvectors X of a real quasi-triangular matrix, in its place.
//   H        n x n; where wi[j] > 0 begins a 2x2 block. On return column j, rows 0..last[j], is the
//            vector of eigenvalue j, or for a pair its real part in column j and its imaginary part
//            in column j+1; the vector is that of the eigenvalue with the positive imaginary part
//   tiny     stands in for a divisor that is zero
//   last     n entries: the last row of each column of X
//   cost     n^3/3 flops
//   method   from the last eigenvalue to the first; as soon as a component is known, its multiple
//            of a column of H joins the right-hand sides above it
void quasi_triangular_vectors(const Parts& h, const double* wr, const double* wi, double tiny,
                              std::ptrdiff_t* last);

// The same for a complex upper triangular matrix with the eigenvalues on its diagonal; each vector
// takes one column, and last[j] = j.
//   cost     4/3 n^3 flops
void triangular_vectors(const Parts& h, double tiny, std::ptrdiff_t* last);

// V := Z X in place of Z: rows low..igh are sums over k = low..igh in ascending order (for complex
// matrices one sum for each product of parts), the other rows are those of X.
//   returns  false when there is no memory
//   cost     n^3 flops (complex: 4 n^3), 16 n doubles of work for complex matrices
bool transform_vectors(const Balance& b, const Parts& x, const std::ptrdiff_t* last,
                       const Parts& z);

// Divides every column of V by its component of largest modulus, which becomes exactly 1; of equal
// ones, the first. A column of zeros stays.
void scale_to_largest(const Parts& v);

}  // namespace matrix_pack
