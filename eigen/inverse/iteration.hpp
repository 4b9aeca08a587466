// An eigenvector of a complex matrix by inverse iteration.
#pragma once

#include "eigen/inverse/scaled_lu.hpp"

namespace matrix_pack {

// The eigenvector x of unit length for the eigenvalue z.
//   A        n x n, overwritten; both part arrays
//   returns  done; singular when a row of the shifted matrix is zero; not_converging when no start
//            grows, or at a zero pivot; interrupted; no_memory. x is of use when done alone
//   cost     8/3 n^3 flops, and 8 n^2 for each of at most 15 solutions
//   method   A - (z - 1e-12) I is factored once. A pseudo-random vector of unit length is solved
//            for, up to five times, until it grows a hundredfold; then come up to ten solutions
//   source   Wilkinson, "The Algebraic Eigenvalue Problem" (1965)
Status inverse_iteration(int n, const ComplexView& a, Complex z, const ComplexView& x);

}  // namespace matrix_pack
