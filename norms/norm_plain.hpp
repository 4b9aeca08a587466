// The sums of the norms in plain loops: the definition of what the kernels compute.
#pragma once

#include <cmath>
#include <cstddef>

#include "norms/norm_kernels.hpp"

namespace matrix_pack::plain {

inline double magnitude(const PartArrays& p, std::ptrdiff_t i, std::ptrdiff_t j) {
  const double a = std::fabs(p.x[j * p.ld + i]);
  if (p.y == nullptr) return a;
  const double b = std::fabs(p.y[j * p.ld + i]);
  if (a == 0.0 || b == 0.0) return a + b;
  if (a <= b) return b * std::sqrt((a / b) * (a / b) + 1.0);
  return a * std::sqrt((b / a) * (b / a) + 1.0);
}

inline void column_sums(std::ptrdiff_t rows, std::ptrdiff_t cols, const PartArrays& a,
                        double* sums) {
  for (std::ptrdiff_t j = 0; j < cols; ++j) {
    sums[j] = 0.0;
    for (std::ptrdiff_t i = 0; i < rows; ++i) sums[j] += magnitude(a, i, j);
  }
}

inline void row_sums(std::ptrdiff_t rows, std::ptrdiff_t cols, const PartArrays& a, double* sums) {
  for (std::ptrdiff_t i = 0; i < rows; ++i) {
    sums[i] = 0.0;
    for (std::ptrdiff_t j = 0; j < cols; ++j) sums[i] += magnitude(a, i, j);
  }
}

inline void gram(std::ptrdiff_t n, const PartArrays& a, double* re, double* im) {
  for (std::ptrdiff_t i = 0; i < n; ++i)
    for (std::ptrdiff_t j = i; j < n; ++j) {
      const double* const xi = a.x + i * a.ld;
      const double* const yi = a.y + i * a.ld;
      const double* const xj = a.x + j * a.ld;
      const double* const yj = a.y + j * a.ld;
      double& bre = re[i * n + j];
      double& bim = im[i * n + j];
      bre = bim = 0.0;
      for (std::ptrdiff_t k = 0; k < n; ++k) {
        bre += xi[k] * xj[k] + yi[k] * yj[k];
        bim += xi[k] * yj[k] - xj[k] * yi[k];
      }
    }
}

}  // namespace matrix_pack::plain
