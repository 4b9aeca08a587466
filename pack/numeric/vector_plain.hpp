// The shared vector loops in plain form: the definition of what the kernels compute.
#pragma once

#include <cmath>
#include <cstddef>

namespace matrix_pack::plain {

// The one order of a sum: see pack/numeric/vector_kernels.hpp. `term(k)` is the k-th term.
template <class Term>
double sum(std::ptrdiff_t n, Term term) {
  double s[8] = {};
  for (std::ptrdiff_t k = 0; k < n; ++k) s[k % 8] += term(k);
  return ((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7]));
}

inline double dot(std::ptrdiff_t n, const double* x, const double* y) {
  return sum(n, [=](std::ptrdiff_t k) { return x[k] * y[k]; });
}

inline double sum_squares(std::ptrdiff_t n, const double* x) {
  return dot(n, x, x);
}

inline double sum_abs(std::ptrdiff_t n, const double* x) {
  return sum(n, [=](std::ptrdiff_t k) { return std::fabs(x[k]); });
}

inline void axpy(std::ptrdiff_t n, double a, const double* x, double* y) {
  for (std::ptrdiff_t k = 0; k < n; ++k) y[k] += a * x[k];
}

inline void scale(std::ptrdiff_t n, double a, double* x) {
  for (std::ptrdiff_t k = 0; k < n; ++k) x[k] *= a;
}

inline void divide(std::ptrdiff_t n, double a, double* x) {
  for (std::ptrdiff_t k = 0; k < n; ++k) x[k] /= a;
}

inline void rotate(std::ptrdiff_t n, double c, double s, double* x, double* y) {
  for (std::ptrdiff_t k = 0; k < n; ++k) {
    const double xk = x[k];
    const double yk = y[k];
    x[k] = c * xk + s * yk;
    y[k] = c * yk - s * xk;
  }
}

}  // namespace matrix_pack::plain
