// Eigen's eigenvalues, for the contests of bench/spectrum_bench.cpp.
#pragma once

#include <complex>

namespace bench::eigen {

// Each puts the eigenvalues of the n x n array a to lambda, and the eigenvectors to x unless that
// is null. The symmetric one reads the lower triangle.
void symmetric_spectrum(int n, const double* a, double* lambda, double* x);
void general_spectrum(int n, const double* a, std::complex<double>* lambda,
                      std::complex<double>* x);
void complex_spectrum(int n, const std::complex<double>* a, std::complex<double>* lambda,
                      std::complex<double>* x);

}  // namespace bench::eigen
