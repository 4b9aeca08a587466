// One pass of the Hermitian tridiagonalisation in plain loops: the definition of what the kernel
// computes.
#pragma once

#include "eigen/hermitian/tridiagonal_kernels.hpp"
#include "pack/numeric/vector_plain.hpp"

namespace matrix_pack::plain {

// See HermitianKernels::update_multiply. Element (j,k) of A is (a.re[k * a.ld + j], a.im[k * a.ld +
// j]).
inline void update(std::ptrdiff_t n, const ComplexArray& a, const ComplexVector& v,
                   const ComplexVector& q) {
  for (std::ptrdiff_t k = 0; k < n; ++k) {
    double& diagonal = a.re[k * a.ld + k];
    diagonal -= v.re[k] * q.re[k] + v.im[k] * q.im[k];
    diagonal -= v.re[k] * q.re[k] + v.im[k] * q.im[k];
    for (std::ptrdiff_t j = k + 1; j < n; ++j) {
      double& re = a.re[k * a.ld + j];
      double& im = a.im[k * a.ld + j];
      re = re - (v.re[j] * q.re[k] + v.im[j] * q.im[k]) - (q.re[j] * v.re[k] + q.im[j] * v.im[k]);
      im = im - (v.im[j] * q.re[k] - v.re[j] * q.im[k]) - (q.im[j] * v.re[k] - q.re[j] * v.im[k]);
    }
  }
}

inline void multiply(std::ptrdiff_t n, const ComplexArray& a, const ComplexVector& x,
                     const ComplexVector& w) {
  const auto at = [&](std::ptrdiff_t j, std::ptrdiff_t k) { return k * a.ld + j; };
  const auto add_product = [&](std::ptrdiff_t j, std::ptrdiff_t k) {
    w.re[j] += a.re[at(j, k)] * x.re[k] - a.im[at(j, k)] * x.im[k];
    w.im[j] += a.re[at(j, k)] * x.im[k] + a.im[at(j, k)] * x.re[k];
  };
  const auto conjugate_re = [&](std::ptrdiff_t j, std::ptrdiff_t k) {
    return a.re[at(j, k)] * x.re[j] + a.im[at(j, k)] * x.im[j];
  };
  const auto conjugate_im = [&](std::ptrdiff_t j, std::ptrdiff_t k) {
    return a.re[at(j, k)] * x.im[j] - a.im[at(j, k)] * x.re[j];
  };
  const auto multiply_diagonal = [&](std::ptrdiff_t k) {
    w.re[k] += a.re[at(k, k)] * x.re[k];
    w.im[k] += a.re[at(k, k)] * x.im[k];
  };
  for (std::ptrdiff_t j = 0; j < n; ++j) w.re[j] = w.im[j] = 0.0;
  for (std::ptrdiff_t k = 0; k < n; k += 2) {
    multiply_diagonal(k);
    if (k + 1 == n) break;
    multiply_diagonal(k + 1);
    w.re[k] += conjugate_re(k + 1, k);
    w.im[k] += conjugate_im(k + 1, k);
    add_product(k + 1, k);
    for (std::ptrdiff_t j = k + 2; j < n; ++j) {
      add_product(j, k);
      add_product(j, k + 1);
    }
    for (const std::ptrdiff_t c : {k, k + 1}) {
      w.re[c] += sum(n - k - 2, [&](std::ptrdiff_t j) { return conjugate_re(k + 2 + j, c); });
      w.im[c] += sum(n - k - 2, [&](std::ptrdiff_t j) { return conjugate_im(k + 2 + j, c); });
    }
  }
}

}  // namespace matrix_pack::plain
