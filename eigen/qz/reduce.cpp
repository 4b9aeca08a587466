// Reduction of a pair to Hessenberg-triangular form.
#include <algorithm>
#include <cmath>

#include "eigen/qz/reflector.hpp"
#include "eigen/qz/stages.hpp"
#include "pack/numeric/reflection_kernels.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// Columns of B that go side by side through the row kernel: above the diagonal alone each would
// have fewer reflectors than the next.
constexpr Index kReducedStrip = 8;

// B upper triangular by Householder reflections from the left, which A undergoes too.
void triangularize(const QzPair& pair) {
  const VectorKernels& kernels = vector_kernels();
  const auto reflect = reflection_kernels().reflect_columns;
  const Index n = pair.n;
  for (Index l = 0; l + 1 < n; ++l) {
    const Index m = n - l;
    double* v = pair.column_of_b(l) + l;
    const double below = kernels.sum_abs(m - 1, v + 1);
    if (below == 0.0) continue;
    const double s = below + std::fabs(v[0]);
    kernels.divide(m, s, v);
    const double r = std::copysign(std::sqrt(kernels.sum_squares(m, v)), v[0]);
    v[0] += r;
    const double rho = r * v[0];
    // x becomes x - v (v'x) / rho for the columns x of B behind this one and for those of A.
    const ColumnReflection reflection = {0, v, 0, v, rho, -1.0};
    reflect(m, n - l - 1, {v + n, n}, &reflection, 1);
    reflect(m, n, {pair.a + l, n}, &reflection, 1);
    v[0] = -s * r;
    std::fill(v + 1, v + m, 0.0);
  }
}

// The reflectors that annihilate column k of A below the sub-diagonal, from the bottom up, applied
// to the column: left[i] acts on rows k + 1 + i and k + 2 + i.
void annihilate_column(double* below, Index count, Reflector2* left) {
  for (Index i = count; i-- > 0;) {
    left[i] = reflector(below[i], below[i + 1]);
    below[i] += (below[i] + left[i].u2 * below[i + 1]) * left[i].v1;
    below[i + 1] = 0.0;
  }
}

// The reflectors on the columns of B that make it triangular again, from the bottom up, applied to
// it: right[i] acts on columns k + 2 + i and k + 1 + i.
void restore_triangle(const QzPair& pair, Index k, Index count, Reflector2* right) {
  const QzKernels& kernels = qz_kernels();
  for (Index i = count; i-- > 0;) {
    const Index l = k + 1 + i;
    right[i] = reflector(pair.B(l + 1, l + 1), pair.B(l + 1, l));
    kernels.reflect_cols2(right[i], l + 2, pair.column_of_b(l), pair.n);
    pair.B(l + 1, l) = 0.0;
  }
}

}  // namespace

void qz_reduce(const QzPair& pair, Reflector2* left) {
  const Index n = pair.n;
  Reflector2* const right = left + n;
  triangularize(pair);
  const QzKernels& kernels = qz_kernels();
  for (Index k = 0; k + 2 < n; ++k) {
    const Index count = n - k - 2;
    double* below = pair.column_of_a(k) + k + 1;
    annihilate_column(below, count, left);
    kernels.climb_rows(count, left, n - k - 1, below + n, n);
    // Column j of B is zero below row j: only reflectors on rows up to j + 1 touch it.
    for (Index j = k + 1; j < n; j += kReducedStrip) {
      const Index cols = std::min(kReducedStrip, n - j);
      kernels.climb_rows(std::min(count, j + cols - k - 1), left, cols, pair.column_of_b(j) + k + 1,
                         n);
    }
    restore_triangle(pair, k, count, right);
    kernels.climb_cols(count, right, n, pair.column_of_a(k + 1), n);
    if (pair.z != nullptr) kernels.climb_cols(count, right, n, pair.column_of_z(k + 1), n);
  }
}

}  // namespace matrix_pack
