#include "svd/bidiagonal.hpp"

#include <algorithm>
#include <cmath>

#include "pack/vector_kernels.hpp"
#include "svd/svd_kernels.hpp"

namespace matrix_pack {

namespace {

// The reflection I + x x^T / h that takes a vector, divided by `scale`, to (g, 0, 0...). All zero
// for a vector of zeros, which is left alone.
struct Reflection {
  double scale = 0.0;
  double g = 0.0;
  double h = 0.0;
};

// The vector in x becomes the vector of its reflection.
Reflection reflection_of(std::ptrdiff_t n, double* x) {
  Reflection r;
  r.scale = vector_kernels().sum_abs(n, x);
  if (r.scale == 0.0) return r;
  vector_kernels().divide(n, r.scale, x);
  double s = 0.0;
  for (std::ptrdiff_t k = 0; k < n; ++k) s += x[k] * x[k];
  const double f = x[0];
  r.g = f >= 0.0 ? -std::sqrt(s) : std::sqrt(s);
  r.h = f * r.g - s;
  x[0] = f - r.g;
  return r;
}

// Row i beyond the diagonal as the column step leaves it, f[k] u0 added where there was one.
void gather_row(const Bidiagonal& b, std::ptrdiff_t i, const double* f, double u0, double* x) {
  const double* a = b.a + (i + 1) * b.ld + i;
  for (std::ptrdiff_t k = 0; k < b.n - i - 1; ++k, a += b.ld)
    x[k] = f != nullptr ? *a + f[k] * u0 : *a;
}

// Row step i, and with it column step i on the block beyond (i, i): the factors of the column step
// are f (null when column i is zero) and its vector is u.
Reflection row_step(const Bidiagonal& b, std::ptrdiff_t i, const double* f, const double* u,
                    double* x) {
  const std::ptrdiff_t l = i + 1;
  const std::ptrdiff_t rows = b.m - l;
  const std::ptrdiff_t cols = b.n - l;
  double* const block = b.a + l * b.ld + l;
  gather_row(b, i, f, u[0], x);
  const Reflection row = reflection_of(cols, x);
  if (row.scale != 0.0) {
    double* const y = b.rv1 + l;
    std::copy_n(x, cols, y);
    vector_kernels().divide(cols, row.h, y);
    svd_kernels().reflect_both(rows, cols, block, b.ld, f, u + 1, x, y);
    vector_kernels().scale(cols, row.scale, x);
  } else if (f != nullptr) {
    for (std::ptrdiff_t k = 0; k < cols; ++k)
      vector_kernels().axpy(rows, f[k], u + 1, block + k * b.ld);
  }
  return row;
}

}  // namespace

double bidiagonalise(const Bidiagonal& b, const RowVectors& row_vectors, double* f) {
  double anorm = 0.0;
  Reflection row;
  for (std::ptrdiff_t i = 0; i < b.n; ++i) {
    const std::ptrdiff_t l = i + 1;
    b.rv1[i] = row.scale * row.g;
    double* const u = b.a + i * b.ld + i;
    const Reflection column = reflection_of(b.m - i, u);
    const bool reflects = column.scale != 0.0;
    if (reflects && l < b.n) {
      svd_kernels().column_dots(b.m - i, b.n - l, u + b.ld, b.ld, u, f);
      vector_kernels().divide(b.n - l, column.h, f);
    }
    b.w[i] = column.scale * column.g;
    if (l < b.n)
      row = row_step(b, i, reflects ? f : nullptr, u, row_vectors.rows + i * row_vectors.step + l);
    if (reflects) vector_kernels().scale(b.m - i, column.scale, u);
    const double size = std::fabs(b.w[i]) + std::fabs(b.rv1[i]);
    if (size > anorm) anorm = size;
  }
  return anorm;
}

}  // namespace matrix_pack
