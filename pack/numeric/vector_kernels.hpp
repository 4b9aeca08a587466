// Inner loops over contiguous vectors, shared by all of the pack.
//
// Sums have one order everywhere: eight partial sums start at zero, partial sum q takes the terms k
// with k mod 8 = q in ascending order, and they are joined as
//   ((s0 + s4) + (s2 + s6)) + ((s1 + s5) + (s3 + s7)).
// All other results are element by element. Vectors must not overlap unless they are the same.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

struct VectorKernels {
  // sum of x[k] * y[k]
  double (*dot)(Index n, const double* x, const double* y);
  // sum of x[k]^2
  double (*sum_squares)(Index n, const double* x);
  // sum of |x[k]|
  double (*sum_abs)(Index n, const double* x);
  // y[k] += a * x[k]
  void (*axpy)(Index n, double a, const double* x, double* y);
  // x[k] *= a
  void (*scale)(Index n, double a, double* x);
  // x[k] /= a
  void (*divide)(Index n, double a, double* x);
  // (x[k], y[k]) becomes (c x[k] + s y[k], c y[k] - s x[k])
  void (*rotate)(Index n, double c, double s, double* x, double* y);
};
MATRIX_SELECT_KERNELS(VectorKernels, vector_kernels)

}  // namespace matrix_pack
