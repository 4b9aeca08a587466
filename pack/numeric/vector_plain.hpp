// The shared vector loops in plain form: the definition of what the kernels compute.
#pragma once

#include <cmath>

#include "pack/numeric/views.hpp"

namespace matrix_pack::plain {

// The one order of a sum: see pack/numeric/vector_kernels.hpp. `term(k)` is the k-th term.
template <class Term>
double sum(Index n, Term term) {
  double s[8] = {};
  for (Index k = 0; k < n; ++k) s[k % 8] += term(k);
  return ((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7]));
}

inline double dot(Index n, const double* x, const double* y) {
  return sum(n, [=](Index k) { return x[k] * y[k]; });
}

inline double sum_squares(Index n, const double* x) {
  return dot(n, x, x);
}

inline double sum_abs(Index n, const double* x) {
  return sum(n, [=](Index k) { return std::fabs(x[k]); });
}

inline void axpy(Index n, double a, const double* x, double* y) {
  for (Index k = 0; k < n; ++k) y[k] += a * x[k];
}

inline void scale(Index n, double a, double* x) {
  for (Index k = 0; k < n; ++k) x[k] *= a;
}

inline void divide(Index n, double a, double* x) {
  for (Index k = 0; k < n; ++k) x[k] /= a;
}

inline void rotate(Index n, double c, double s, double* x, double* y) {
  for (Index k = 0; k < n; ++k) {
    const double xk = x[k];
    const double yk = y[k];
    x[k] = c * xk + s * yk;
    y[k] = c * yk - s * xk;
  }
}

}  // namespace matrix_pack::plain
