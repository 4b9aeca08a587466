// The QZ method of Moler and Stewart for a pair of real square matrices, in four stages.
//
// Source: C. B. Moler and G. W. Stewart, An algorithm for generalized matrix eigenvalue problems,
// SIAM Journal on Numerical Analysis 10 (1973), 241-256.
#pragma once

#include "eigen/qz/reflector_kernels.hpp"

namespace matrix_pack {

// A pair (A, B) on its way through the stages: n x n, column-major, leading dimension n. A and B
// are overwritten. Z gathers the transformations from the right; null when only the eigenvalues are
// wanted: the stages then leave out what no eigenvalue depends on.
struct QzPair {
  Index n;
  double* a;
  double* b;
  double* z;

  double& A(Index i, Index j) const { return a[j * n + i]; }
  double& B(Index i, Index j) const { return b[j * n + i]; }
  double* column_of_a(Index j) const { return a + j * n; }
  double* column_of_b(Index j) const { return b + j * n; }
  double* column_of_z(Index j) const { return z + j * n; }
};

// The eigenvalues alpha / beta by their position on the diagonal, beta >= 0. Of a complex pair the
// first has the positive imaginary part. Arrays of n.
struct QzValues {
  double* alfr;
  double* alfi;
  double* beta;
};

// The stages, in their order, with the room that they need.

// A becomes upper Hessenberg, B upper triangular, Z the product of the transformations from the
// right. `pairs` has room for 2 n.
void qz_reduce(const QzPair& pair, Reflector2* pairs);

// The Hessenberg-triangular pair becomes quasi-triangular: blocks of order 1 and 2 on the diagonal
// of A. Null, or "too many iterations": the pair is then of no use. Leaves B's tolerance for zero
// in B(n, 1), counted from 1. `pairs` and `triples` have room for n.
const char* qz_iterate(const QzPair& pair, Reflector2* pairs, Reflector3* triples);

// The eigenvalues of the quasi-triangular pair; blocks with real eigenvalues are split.
void qz_eigenvalues(const QzPair& pair, const QzValues& values);

// Z becomes the eigenvectors: a column for a real eigenvalue; for a complex pair the real and the
// imaginary part of the vector of its first one. `work` has room for 4 n doubles.
void qz_vectors(const QzPair& pair, const QzValues& values, double* work);

}  // namespace matrix_pack
