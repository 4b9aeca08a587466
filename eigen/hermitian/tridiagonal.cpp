#include "eigen/hermitian/tridiagonal.hpp"

#include <cmath>
#include <utility>

#include "eigen/hermitian/tridiagonal_kernels.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

using Index = std::ptrdiff_t;

constexpr ComplexVector kAbsent = {nullptr, nullptr};

// max sqrt((min / max)^2 + 1) of the magnitudes of the two parts.
double modulus(double re, double im) {
  const double x = std::fabs(re);
  const double y = std::fabs(im);
  const double larger = x < y ? y : x;
  const double smaller = x < y ? x : y;
  if (larger == 0.0) return 0.0;
  const double ratio = smaller / larger;
  return larger * std::sqrt(ratio * ratio + 1.0);
}

// The matrix a - v q^H - q v^H; a alone while v is absent.
struct Pending {
  ComplexArray a;
  ComplexVector v;
  ComplexVector q;

  double diagonal(Index i) const {
    const double aii = a.re[i * a.ld + i];
    if (v.re == nullptr) return aii;
    const double vq = v.re[i] * q.re[i] + v.im[i] * q.im[i];
    return aii - vq - vq;
  }

  // x becomes the conjugate of row i left of the diagonal.
  void conjugate_row(Index i, const ComplexVector& x) const {
    for (Index k = 0; k < i; ++k) {
      double re = a.re[k * a.ld + i];
      double im = a.im[k * a.ld + i];
      if (v.re != nullptr) {
        re = re - (v.re[i] * q.re[k] + v.im[i] * q.im[k]) - (q.re[i] * v.re[k] + q.im[i] * v.im[k]);
        im = im - (v.im[i] * q.re[k] - v.re[i] * q.im[k]) - (q.im[i] * v.re[k] - q.re[i] * v.im[k]);
      }
      x.re[k] = re;
      x.im[k] = -im;
    }
  }
};

// x, of n >= 1 elements, becomes the vector of the reflection I - x x^H / h that makes all but its
// last element zero. The square of the modulus of that element goes to *e2.
// Returns h, or 0 for a zero vector, which is left alone.
double reflection_of(Index n, const ComplexVector& x, double* e2) {
  *e2 = 0.0;
  const double scale = hermitian_kernels().sum_magnitudes(n, x);
  if (scale == 0.0) return 0.0;
  vector_kernels().divide(n, scale, x.re);
  vector_kernels().divide(n, scale, x.im);
  const double h = hermitian_kernels().sum_squares(n, x);
  *e2 = scale * scale * h;
  const double g = std::sqrt(h);
  double& re = x.re[n - 1];
  double& im = x.im[n - 1];
  const double f = modulus(re, im);
  if (f == 0.0) {
    re = g;
    return h;
  }
  const double stretch = 1.0 + g / f;
  re *= stretch;
  im *= stretch;
  return h + f * g;
}

// p = a x, in w, becomes q with which (I - x x^H / h) a (I - x x^H / h) = a - x q^H - q x^H.
void complete_update(Index n, double h, const ComplexVector& x, const ComplexVector& w) {
  const VectorKernels& kernels = vector_kernels();
  kernels.divide(n, h, w.re);
  kernels.divide(n, h, w.im);
  const double f = kernels.dot(n, x.re, w.re) + kernels.dot(n, x.im, w.im);
  const double hh = f / (h + h);
  kernels.axpy(n, -hh, x.re, w.re);
  kernels.axpy(n, -hh, x.im, w.im);
}

}  // namespace

// From the last row up: row i left of the diagonal gives a reflection of the leading i rows and
// columns. Each update is kept back until the next pass, which also forms the next product.
void reduce_hermitian(Index n, const ComplexArray& a, double* d, double* e2, double* work) {
  ComplexVector buffers[4];
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
    if (i == 1) continue;  // A single element has only a phase to lose.
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
