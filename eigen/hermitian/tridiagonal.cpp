#include "eigen/hermitian/tridiagonal.hpp"

#include <cmath>
#include <utility>

#include "eigen/hermitian/tridiagonal_kernels.hpp"
#include "pack/numeric/complex_vector_kernels.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

constexpr ComplexView kAbsent = {nullptr, nullptr};

// The matrix a - v q^H - q v^H; a alone while v is absent.
struct Pending {
  ComplexView a;
  ComplexView v;
  ComplexView q;

  double diagonal(Index i) const {
    const double aii = a(i, i).re;
    if (v.re == nullptr) return aii;
    const double vq = v.re[i] * q.re[i] + v.im[i] * q.im[i];
    return aii - vq - vq;
  }

  // x becomes the conjugate of row i left of the diagonal.
  void conjugate_row(Index i, const ComplexView& x) const {
    for (Index k = 0; k < i; ++k) {
      Complex z = a(i, k);
      if (v.re != nullptr) {
        z = subtract(z, multiply_conjugate(v[i], q[k]));
        z = subtract(z, multiply_conjugate(q[i], v[k]));
      }
      x.set(k, {z.re, -z.im});
    }
  }
};

// x, of n >= 1 elements, becomes the vector of the reflection I - x x^H / h that makes all but its
// last element zero. The square of the modulus of that element goes to *e2.
// Returns h, or 0 for a zero vector, which is left alone.
double reflection_of(Index n, const ComplexView& x, double* e2) {
  *e2 = 0.0;
  const double scale = complex_vector_kernels().sum_magnitudes(n, x);
  if (scale == 0.0) return 0.0;
  vector_kernels().divide(n, scale, x.re);
  vector_kernels().divide(n, scale, x.im);
  const double h = complex_vector_kernels().sum_squares(n, x);
  *e2 = scale * scale * h;
  const double g = std::sqrt(h);
  const Complex last = x[n - 1];
  const double f = scaled_modulus(last.re, last.im);
  if (f == 0.0) {
    x.re[n - 1] = g;
    return h;
  }
  const double stretch = 1.0 + g / f;
  x.set(n - 1, {last.re * stretch, last.im * stretch});
  return h + f * g;
}

// p = a x, in w, becomes q with which (I - x x^H / h) a (I - x x^H / h) = a - x q^H - q x^H.
void complete_update(Index n, double h, const ComplexView& x, const ComplexView& w) {
  const VectorKernels& kernels = vector_kernels();
  kernels.divide(n, h, w.re);
  kernels.divide(n, h, w.im);
  const double f_re = kernels.dot(n, x.re, w.re);
  const double f = f_re + kernels.dot(n, x.im, w.im);
  const double hh = f / (h + h);
  kernels.axpy(n, -hh, x.re, w.re);
  kernels.axpy(n, -hh, x.im, w.im);
}

}  // namespace

// From the last row up: row i left of the diagonal gives a reflection of the leading i rows and
// columns. Each update is kept back until the next pass, which also forms the next product.
void reduce_hermitian(Index n, const ComplexView& a, double* d, double* e2, double* work) {
  ComplexView buffers[4];
  for (Index b = 0; b < 4; ++b) buffers[b] = {work + 2 * b * n, work + (2 * b + 1) * n};
  auto& [v, q, x, w] = buffers;
  Pending pending = {a, kAbsent, kAbsent};
  for (Index i = n - 1; i >= 0; --i) {
    d[i] = pending.diagonal(i);
    if (i == 0) {
      e2[i] = 0.0;
      break;
    }
    pending.conjugate_row(i, x);
    const double h = reflection_of(i, x, &e2[i]);
    if (i == 1) continue;  // One element: only its modulus counts, and that is known.
    if (h == 0.0) {
      if (pending.v.re != nullptr)
        hermitian_kernels().update_multiply(i, a, pending.v, pending.q, kAbsent, kAbsent);
      pending.v = pending.q = kAbsent;
      continue;
    }
    hermitian_kernels().update_multiply(i, a, pending.v, pending.q, x, w);
    complete_update(i, h, x, w);
    std::swap(v, x);
    std::swap(q, w);
    pending.v = v;
    pending.q = q;
  }
}

}  // namespace matrix_pack
