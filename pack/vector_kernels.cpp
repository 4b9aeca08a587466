#include "pack/vector_kernels.hpp"

#include "pack/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// The end of a sum: the terms from k on join their partial sums, then these are joined.
template <class Term>
MATRIX_LANES_INLINE double finish(const Lanes& lanes, std::ptrdiff_t k, std::ptrdiff_t n,
                                  Term term) {
  double sums[kLanes];
  store_lanes(sums, lanes);
  for (int q = 0; k < n; ++k, ++q) sums[q] += term(k);
  return join(sums);
}

double dot(std::ptrdiff_t n, const double* x, const double* y) {
  Lanes sums = {};
  std::ptrdiff_t k = 0;
  for (; k + kLanes <= n; k += kLanes) add_products(sums, x + k, y + k);
  return finish(sums, k, n, [=](std::ptrdiff_t i) { return x[i] * y[i]; });
}

double sum_squares(std::ptrdiff_t n, const double* x) {
  return dot(n, x, x);
}

double sum_abs(std::ptrdiff_t n, const double* x) {
  Lanes sums = {};
  std::ptrdiff_t k = 0;
  for (; k + kLanes <= n; k += kLanes) add_magnitudes(sums, x + k);
  return finish(sums, k, n, [=](std::ptrdiff_t i) { return __builtin_fabs(x[i]); });
}

void axpy(std::ptrdiff_t n, double a, const double* __restrict x, double* __restrict y) {
  for (std::ptrdiff_t k = 0; k < n; ++k) y[k] += a * x[k];
}

void scale(std::ptrdiff_t n, double a, double* x) {
  for (std::ptrdiff_t k = 0; k < n; ++k) x[k] *= a;
}

void divide(std::ptrdiff_t n, double a, double* x) {
  for (std::ptrdiff_t k = 0; k < n; ++k) x[k] /= a;
}

void rotate(std::ptrdiff_t n, double c, double s, double* __restrict x, double* __restrict y) {
  for (std::ptrdiff_t k = 0; k < n; ++k) {
    const double xk = x[k];
    const double yk = y[k];
    x[k] = c * xk + s * yk;
    y[k] = c * yk - s * xk;
  }
}

}  // namespace

const VectorKernels vector_kernels_table = {dot, sum_squares, sum_abs, axpy, scale, divide, rotate};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
