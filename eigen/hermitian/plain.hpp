// One pass of the Hermitian tridiagonalisation in plain loops: the definition of what the kernel
// computes. See HermitianKernels::update_multiply.
#pragma once

#include "pack/numeric/vector_plain.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack::plain {

inline void update(Index n, const ComplexView& a, const ComplexView& v, const ComplexView& q) {
  for (Index k = 0; k < n; ++k) {
    double& diagonal = a.re[k * a.ld + k];
    diagonal -= v.re[k] * q.re[k] + v.im[k] * q.im[k];
    diagonal -= v.re[k] * q.re[k] + v.im[k] * q.im[k];
    for (Index j = k + 1; j < n; ++j)
      a.set(j, k,
            subtract(subtract(a(j, k), multiply_conjugate(v[j], q[k])),
                     multiply_conjugate(q[j], v[k])));
  }
}

inline void multiply_hermitian(Index n, const ComplexView& a, const ComplexView& x,
                               const ComplexView& w) {
  const auto add_to = [&](Index j, Complex term) { w.set(j, add(w[j], term)); };
  const auto add_product = [&](Index j, Index k) { add_to(j, multiply(a(j, k), x[k])); };
  const auto multiply_diagonal = [&](Index k) {
    w.re[k] += a.re[k * a.ld + k] * x.re[k];
    w.im[k] += a.re[k * a.ld + k] * x.im[k];
  };
  for (Index j = 0; j < n; ++j) w.set(j, {0.0, 0.0});
  for (Index k = 0; k < n; k += 2) {
    multiply_diagonal(k);
    if (k + 1 == n) break;
    multiply_diagonal(k + 1);
    add_to(k, multiply_conjugate(x[k + 1], a(k + 1, k)));
    add_product(k + 1, k);
    for (Index j = k + 2; j < n; ++j) {
      add_product(j, k);
      add_product(j, k + 1);
    }
    for (const Index c : {k, k + 1}) {
      const auto term = [&](Index j) { return multiply_conjugate(x[j], a(j, c)); };
      w.re[c] += sum(n - k - 2, [&](Index j) { return term(k + 2 + j).re; });
      w.im[c] += sum(n - k - 2, [&](Index j) { return term(k + 2 + j).im; });
    }
  }
}

}  // namespace matrix_pack::plain
