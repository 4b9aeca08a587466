// An eigenvector of a complex matrix by inverse iteration.
#pragma once

#include "eigen/inverse/scaled_lu.hpp"

namespace matrix_pack {

// The eigenvector of unit length for the eigenvalue z, to (re, im).
//   A        n x n, overwritten; both part arrays
//   returns  done; singular when a row of the shifted matrix is zero; not_converging when no start
//            grows, or at a zero pivot; interrupted; no_memory
//   cost     8/3 n^3 flops, and 8 n^2 for each of at most 15 solutions
//   method   A - (z - 1e-12) I is factored once. A pseudo-random vector of unit length is solved
//   for,
//            up to five times, until it grows a hundredfold; then come up to ten solutions
//   source   Wilkinson, "The Algebraic Eigenvalue Problem" (1965)
Status inverse_iteration(const Parts& a, double z_re, double z_im, double* re, double* im);

}  // namespace matrix_pack
