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

// The singular values of the m x n array a (m >= n) to s, descending; with the factors, if u and v
// are not null, to u (m x n) and v (n x n).
void svd(int m, int n, double* a, double* s, double* u, double* v);
void complex_singular_values(int n, double* a, double* s);

// The eigenvalues of a Hermitian matrix, of which the lower triangle is read, to d, ascending.
void hermitian_eigenvalues(int n, double* a, double* d);

// Largest column sum, largest row sum, root of the sum of squares of the magnitudes.
double norm1(int n, const double* a);
double normi(int n, const double* a);
double norme(int n, const double* a);
double complex_norm1(int n, const double* a);
double complex_normi(int n, const double* a);
double complex_norme(int n, const double* a);

}  // namespace bench::eigen
