#include "pack/numeric/vector_kernels.hpp"

#include "pack/numeric/lanes/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

double dot(Index n, const double* x, const double* y) {
  return sum_of(
      n, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA { return load<V>(x + k) * load<V>(y + k); });
}

double sum_squares(Index n, const double* x) {
  return dot(n, x, x);
}

double sum_abs(Index n, const double* x) {
  return sum_of(
      n, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA { return magnitude(load<V>(x + k)); });
}

void axpy(Index n, double a, const double* __restrict x, double* __restrict y) {
  for (Index k = 0; k < n; ++k) y[k] += a * x[k];
}

void scale(Index n, double a, double* x) {
  for (Index k = 0; k < n; ++k) x[k] *= a;
}

void divide(Index n, double a, double* x) {
  for (Index k = 0; k < n; ++k) x[k] /= a;
}

void rotate(Index n, double c, double s, double* __restrict x, double* __restrict y) {
  for (Index k = 0; k < n; ++k) {
    const double xk = x[k];
    const double yk = y[k];
    x[k] = c * xk + s * yk;
    y[k] = c * yk - s * xk;
  }
}

}  // namespace

const VectorKernels vector_kernels_table = {dot, sum_squares, sum_abs, axpy, scale, divide, rotate};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
