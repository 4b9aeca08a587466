#include "eigen/symmetric/tridiagonal_kernels.hpp"

#include "pack/numeric/lanes/column_products.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

void take_row(Index i, RealView a, const double* u, const double* e, double* row) {
  for (Index k = 0; k <= i; ++k) row[k] = a(i, k);
  if (u == nullptr) return;
  const double ui = u[i];
  const double ei = e[i];
  for (Index k = 0; k <= i; ++k) row[k] -= ui * e[k] + ei * u[k];
  a(i, i) = row[i];
}

// What a pass over the triangle works on.
struct Pass {
  Index n;
  RealView a;
  const double* u;
  const double* e;
  const double* v;
  double* p;
};

// Columns c..c+cols-1 of row r (c + cols - 1 <= r). The products of the elements below the diagonal
// go to the partial sums of their columns.
template <bool kUpdate, bool kMultiply>
MATRIX_INLINE void one_row(const Pass& s, Index c, int cols, Index r, double (*sums)[kLanes]) {
  double p = kMultiply ? s.p[r] : 0.0;
  for (int j = 0; j < cols; ++j) {
    double& x = s.a(r, c + j);
    if (kUpdate) x -= s.u[r] * s.e[c + j] + s.e[r] * s.u[c + j];
    if (!kMultiply) continue;
    p += x * s.v[c + j];
    if (r > c + j) sums[j][r % kLanes] += x * s.v[r];
  }
  if (kMultiply) s.p[r] = p;
}

// Rows first..last-1 (first a multiple of eight) of columns c..c+kCols-1, as far as whole vectors
// go; returns the first row that is left. What all rows need is copied: a store to the arrays might
// change it, for all the compiler knows.
template <bool kUpdate, bool kMultiply, int kCols>
MATRIX_INLINE Index whole_rows(Pass s, Index c, Index first, double (*sums)[kLanes]) {
  double uc[kCols], ec[kCols], vc[kCols];
  for (int j = 0; j < kCols; ++j) {
    uc[j] = kUpdate ? s.u[c + j] : 0.0;
    ec[j] = kUpdate ? s.e[c + j] : 0.0;
    vc[j] = kMultiply ? s.v[c + j] : 0.0;
  }
  Vector lanes[kCols][kParts];
  for (int j = 0; j < kCols; ++j)
    for (int i = 0; i < kParts; ++i) lanes[j][i] = load_vector(sums[j] + i * kWidth);
  Index r = first;
  for (; r + kLanes <= s.n; r += kLanes) {
    for (int i = 0; i < kParts; ++i) {
      const Index k = r + i * kWidth;
      Vector u, e, v, p;
      if (kUpdate) u = load_vector(s.u + k), e = load_vector(s.e + k);
      if (kMultiply) v = load_vector(s.v + k), p = load_vector(s.p + k);
      for (int j = 0; j < kCols; ++j) {
        double* const column = s.a.column(c + j);
        Vector x = load_vector(column + k);
        if (kUpdate) {
          x -= u * ec[j] + e * uc[j];
          store_vector(column + k, x);
        }
        if (kMultiply) {
          p += x * vc[j];
          lanes[j][i] += x * v;
        }
      }
      if (kMultiply) store_vector(s.p + k, p);
    }
  }
  for (int j = 0; j < kCols; ++j)
    for (int i = 0; i < kParts; ++i) store_vector(sums[j] + i * kWidth, lanes[j][i]);
  return r;
}

template <bool kUpdate, bool kMultiply, int kCols>
void columns(const Pass& s, Index c) {
  double sums[kCols][kLanes] = {};
  Index r = c;
  for (; r < c + kCols - 1; ++r)
    one_row<kUpdate, kMultiply>(s, c, static_cast<int>(r - c + 1), r, sums);
  for (; r % kLanes != 0 && r < s.n; ++r) one_row<kUpdate, kMultiply>(s, c, kCols, r, sums);
  r = whole_rows<kUpdate, kMultiply, kCols>(s, c, r, sums);
  for (; r < s.n; ++r) one_row<kUpdate, kMultiply>(s, c, kCols, r, sums);
  if (!kMultiply) return;
  for (int j = 0; j < kCols; ++j) s.p[c + j] += join(sums[j]);
}

// Four columns at a time share the loads of the vectors.
template <bool kUpdate, bool kMultiply>
void pass(const Pass& s) {
  by_fours(0, s.n, [&]<int K>(Index c, Group<K>) { columns<kUpdate, kMultiply, K>(s, c); });
}

void update_and_multiply(Index n, RealView a, const double* u, const double* e, const double* v,
                         double* p) {
  const Pass s = {n, a, u, e, v, p};
  if (v == nullptr) {
    pass<true, false>(s);
    return;
  }
  for (Index k = 0; k < n; ++k) p[k] = 0.0;
  if (u == nullptr)
    pass<false, true>(s);
  else
    pass<true, true>(s);
}

void finish_update(Index n, double h, const double* v, double* p) {
  for (Index k = 0; k < n; ++k) p[k] /= h;
  double f = 0.0;
  for (Index k = 0; k < n; ++k) f += p[k] * v[k];
  const double hh = f / (h + h);
  for (Index k = 0; k < n; ++k) p[k] -= hh * v[k];
}

// Reflections i0..i1-1, on K columns from c on, which stand before them. Row i of the columns
// becomes 0 behind reflection i: there it held the vector of the reflection, which `rows` now has.
template <int K>
void reflect_columns(Index i0, Index i1, RealView a, const double* h, const double* rows,
                     Index row_length, Index c) {
  const RealView columns = a.from(0, c);
  for (Index i = i0; i < i1; ++i, rows += row_length) {
    if (h[i] != 0.0) {
      // columns := columns - (row . columns) column i
      double f[K];
      dots_of<K>(i, columns, rows, f);
      for (double& fk : f) fk = -fk;
      add_outer_to<K>(i, columns, a.column(i), f);
    }
    for (int k = 0; k < K; ++k) columns(i, k) = 0.0;
  }
}

void accumulate(Index first, Index count, RealView a, double* h, double* work) {
  const Index end = first + count;
  for (Index i = first; i < end; ++i)
    for (Index k = 0; k < i; ++k) work[(i - first) * end + k] = a(i, k);
  by_fours(0, first, [=]<int K>(Index c, Group<K>) MATRIX_INLINE_LAMBDA {
    reflect_columns<K>(first, end, a, h, work, end, c);
  });
  // Columns first..end-1, in ascending order: each begins as a unit vector, and its old contents
  // serve no column from there on.
  for (Index c = first; c < end; ++c) {
    double* const column = a.column(c);
    h[c] = column[c];
    for (Index k = 0; k < c; ++k) column[k] = 0.0;
    column[c] = 1.0;
    reflect_columns<1>(c + 1, end, a, h, work + (c + 1 - first) * end, end, c);
  }
}

}  // namespace

const TridiagonalKernels tridiagonal_kernels_table = {take_row, update_and_multiply, finish_update,
                                                      accumulate};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
