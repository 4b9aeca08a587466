// Eigen's answers to the generalized eigenproblem, behind plain arrays.
#pragma once

namespace bench::eigen {

// The eigenvalues alpha / beta of A x = lambda B x, alpha with its parts side by side; a and b are
// n x n. With x not null also the vectors, one a column, parts side by side.
void generalized(int n, const double* a, const double* b, double* alpha, double* beta, double* x);

}  // namespace bench::eigen
