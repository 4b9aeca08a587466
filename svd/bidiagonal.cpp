#include "svd/bidiagonal.hpp"

#include <algorithm>
#include <cmath>

#include "pack/numeric/lines.hpp"
#include "pack/numeric/vector_kernels.hpp"
#include "svd/bidiagonal_kernels.hpp"

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
Reflection reflection_of(Index n, double* x) {
  Reflection r;
  r.scale = vector_kernels().sum_abs(n, x);
  if (r.scale == 0.0) return r;
  vector_kernels().divide(n, r.scale, x);
  double s = 0.0;
  for (Index k = 0; k < n; ++k) s += x[k] * x[k];
  const double f = x[0];
  r.g = f >= 0.0 ? -std::sqrt(s) : std::sqrt(s);
  r.h = f * r.g - s;
  x[0] = f - r.g;
  return r;
}

// The reflections of a step that wait to be applied to the block beyond its diagonal element.
struct Pending {
  const double* u = nullptr;  // The vector of the column step, by row; null for none.
  const double* t = nullptr;  // The factors of the row step, by row; null for none.
};

// In `cols` columns from k on of the block beyond (i - 1, i - 1): the reflections that wait, whose
// factors and vector by column are f and b.rv1. Then f becomes the products of the columns with x,
// unless that is null.
void finish_columns(const Bidiagonal& b, Index i, Index k, Index cols, const Pending& pending,
                    double* f, const double* x) {
  bidiagonal_kernels().reflect_both(b.m - i, cols, {b.a + k * b.ld + i, b.ld}, f + k, pending.u,
                                    pending.t, b.rv1 + k, x);
}

// Row i beyond the diagonal as the column step leaves it, f[k] u0 added where there was one.
void gather_row(const Bidiagonal& b, Index i, const double* f, double u0, double* x) {
  const double* a = b.a + (i + 1) * b.ld + i;
  for (Index k = 0; k < b.n - i - 1; ++k, a += b.ld) x[k] = f != nullptr ? *a + f[k] * u0 : *a;
}

// Row step i: its vector in x and, divided by h, in b.rv1; its factors in t. The factors of the
// column step are f (null when column i is zero) and its vector is u.
Reflection row_step(const Bidiagonal& b, Index i, const double* f, const double* u, double* x,
                    double* t, double* sums) {
  const Index l = i + 1;
  const Index cols = b.n - l;
  gather_row(b, i, f, u[0], x);
  const Reflection row = reflection_of(cols, x);
  if (row.scale == 0.0) return row;
  std::copy_n(x, cols, b.rv1 + l);
  vector_kernels().divide(cols, row.h, b.rv1 + l);
  bidiagonal_kernels().row_sums(b.m - l, cols, {b.a + l * b.ld + l, b.ld}, f, u + 1, x, sums, t);
  vector_kernels().scale(cols, row.scale, x);
  return row;
}

}  // namespace

Index bidiagonalise_work(Index m, Index n) {
  return n + m + kLine + row_sums_work(m);
}

double bidiagonalise(const Bidiagonal& b, const RowVectors& row_vectors, double* work) {
  double* const f = work;
  double* const factors = work + b.n;
  double* const sums = factors + b.m + kLine;
  double anorm = 0.0;
  Reflection column;
  Reflection row;
  Pending pending;
  // The vector of column i, once its reflection has been applied.
  const auto restore = [&](Index i) {
    if (column.scale != 0.0) vector_kernels().scale(b.m - i, column.scale, b.a + i * b.ld + i);
  };
  for (Index i = 0; i < b.n; ++i) {
    const Index l = i + 1;
    double* const u = b.a + i * b.ld + i;
    finish_columns(b, i, i, 1, pending, f, nullptr);
    b.rv1[i] = row.scale * row.g;
    const Reflection next = reflection_of(b.m - i, u);
    const bool reflects = next.scale != 0.0;
    double* const t = as_in_line(factors, u + 1);
    finish_columns(b, i, l, b.n - l, pending, f, reflects ? u : nullptr);
    if (i > 0) restore(i - 1);
    column = next;
    if (reflects) vector_kernels().divide(b.n - l, column.h, f + l);
    b.w[i] = column.scale * column.g;
    if (l < b.n)
      row = row_step(b, i, reflects ? f + l : nullptr, u,
                     row_vectors.rows + i * row_vectors.step + l, t, sums);
    pending = {reflects ? u + 1 : nullptr, row.scale != 0.0 ? t : nullptr};
    const double size = std::fabs(b.w[i]) + std::fabs(b.rv1[i]);
    if (size > anorm) anorm = size;
  }
  restore(b.n - 1);
  return anorm;
}

}  // namespace matrix_pack
