// The reduction of a Hermitian matrix to a real symmetric tridiagonal one with the same
// eigenvalues.
#pragma once

#include "eigen/shared/complex_arrays.hpp"

namespace matrix_pack {

// Doubles of work for order n.
constexpr std::ptrdiff_t tridiagonal_work(std::ptrdiff_t n) {
  return 8 * n;
}

// The diagonal d and the squares e2 of what stands beside it (e2[i] left of d[i], e2[0] = 0).
// The lower triangle of a is overwritten.
void reduce_hermitian(std::ptrdiff_t n, const ComplexArray& a, double* d, double* e2, double* work);

}  // namespace matrix_pack
