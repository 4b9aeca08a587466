// The reduction of a Hermitian matrix to a real symmetric tridiagonal one with the same
// eigenvalues.
#pragma once

#include "pack/numeric/views.hpp"

namespace matrix_pack {

// Doubles of work for order n.
constexpr Index tridiagonal_work(Index n) {
  return 8 * n;
}

// The diagonal d and the squares e2 of what stands beside it (e2[i] left of d[i], e2[0] = 0).
// The lower triangle of a is overwritten.
void reduce_hermitian(Index n, const ComplexView& a, double* d, double* e2, double* work);

}  // namespace matrix_pack
