#include "pack/numeric/complex_vector_kernels.hpp"

#include "pack/numeric/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

void subtract_multiple(std::ptrdiff_t n, Complex f, const double* ur, const double* ui, double* xr,
                       double* xi) {
  over_elements(0, n, [=](std::ptrdiff_t k, auto v) {
    using V = decltype(v);
    const V a = load<V>(ur + k), b = load<V>(ui + k);
    store(xr + k, load<V>(xr + k) - (a * f.re - b * f.im));
    store(xi + k, load<V>(xi + k) - (b * f.re + a * f.im));
  });
}

double sum_squares(std::ptrdiff_t n, const double* re, const double* im) {
  Vector lanes[kParts] = {};
  std::ptrdiff_t k = 0;
  for (; k + kLanes <= n; k += kLanes) {
    for (int i = 0; i < kParts; ++i) {
      const Vector a = load_vector(re + k + i * kWidth), b = load_vector(im + k + i * kWidth);
      lanes[i] += a * a + b * b;
    }
  }
  double sums[kLanes];
  for (int i = 0; i < kParts; ++i) store_vector(sums + i * kWidth, lanes[i]);
  for (int q = 0; k < n; ++k, ++q) sums[q] += re[k] * re[k] + im[k] * im[k];
  return join(sums);
}

}  // namespace

const ComplexVectorKernels complex_vector_kernels_table = {subtract_multiple, sum_squares};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
