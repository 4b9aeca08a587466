// Eigen's answers, behind plain arrays: column-major, n x n, complex numbers with their parts side
// by side.
#pragma once

#include <string>

namespace bench::eigen {

std::string version();

// a becomes its LU factors; row i of a has gone to row position[i].
void lu(int n, double* a, int* position);
void complex_lu(int n, double* a, int* position);

// a becomes its inverse.
void invert(int n, double* a);
void complex_invert(int n, double* a);

// b becomes the solution of a x = b; a becomes its factors.
void solve(int n, double* a, double* b);
void complex_solve(int n, double* a, double* b);

// The lower triangle of a becomes its Cholesky factor.
void cholesky(int n, double* a);

// The upper triangle of the m x n array a becomes R; q, m x m, becomes Q.
void qr(int m, int n, double* a, double* q);

}  // namespace bench::eigen
