// The eigenvalues of a Hermitian matrix, as the 2-norm of a complex matrix uses them.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// All eigenvalues of a Hermitian matrix, ascending.
//   a        n x n with both part arrays, overwritten; only the lower triangle and the real parts
//            of the diagonal are read
//   d        n doubles, the eigenvalues
//   returns  null, or "invalid dimension", "must be square", "out of memory", "too many
//            iterations"; d is then of no use
//   cost     16 n^3 / 3 flops in one pass over memory a step; O(n) doubles of work
//   method   Householder reduction to a real tridiagonal matrix (Martin, Reinsch and Wilkinson,
//            Handbook for Automatic Computation II (1971), contribution II/2, for complex
//            matrices), then the rational QL method (Reinsch, Communications of the ACM 16, 1973).
//            The phases that make the tridiagonal matrix real are not formed: only eigenvectors
//            would need them
const char* hermitian_eigenvalues(aMatrix* a, double* d);

}  // namespace matrix_pack
