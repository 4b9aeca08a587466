// The sums of the norms in plain loops: the definition of what the kernels compute.
#pragma once

#include <cmath>

#include "norms/norm_kernels.hpp"
#include "pack/numeric/moduli.hpp"

namespace matrix_pack::plain {

inline double magnitude(const ConstComplexView& p, Index i, Index j) {
  const double re = p.re[j * p.ld + i];
  return p.im == nullptr ? std::fabs(re) : scaled_modulus(re, p.im[j * p.ld + i]);
}

inline void column_sums(Index rows, Index cols, const ConstComplexView& a, double* sums) {
  for (Index j = 0; j < cols; ++j) {
    sums[j] = 0.0;
    for (Index i = 0; i < rows; ++i) sums[j] += magnitude(a, i, j);
  }
}

inline void row_sums(Index rows, Index cols, const ConstComplexView& a, double* sums) {
  for (Index i = 0; i < rows; ++i) {
    sums[i] = 0.0;
    for (Index j = 0; j < cols; ++j) sums[i] += magnitude(a, i, j);
  }
}

inline void gram(Index n, const ConstComplexView& a, double* re, double* im) {
  for (Index i = 0; i < n; ++i)
    for (Index j = i; j < n; ++j) {
      const double* const xi = a.re + i * a.ld;
      const double* const yi = a.im + i * a.ld;
      const double* const xj = a.re + j * a.ld;
      const double* const yj = a.im + j * a.ld;
      double& bre = re[i * n + j];
      double& bim = im[i * n + j];
      bre = bim = 0.0;
      for (Index k = 0; k < n; ++k) {
        bre += xi[k] * xj[k] + yi[k] * yj[k];
        bim += xi[k] * yj[k] - xj[k] * yi[k];
      }
    }
}

}  // namespace matrix_pack::plain
