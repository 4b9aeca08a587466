#include "svd/svd_kernels.hpp"

#include "pack/numeric/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// --- Dot products and rank-one updates of several columns at once ---

// dots[k] = the dot product of column k with x; elements(j, V{})(k) gives those of column k from
// row j on.
template <int kColumns, class Elements>
MATRIX_INLINE void dots_with(Index rows, const double* x, double* dots, Elements elements) {
  Lanes sums[kColumns] = {};
  Index whole = 0;
  for (; whole + kLanes <= rows; whole += kLanes)
    for (int p = 0; p < kParts; ++p) {
      const Index j = whole + p * kWidth;
      const Vector xj = load_vector(x + j);
      const auto column = elements(j, Vector{});
      for (int k = 0; k < kColumns; ++k) sums[k].part[p] += column(k) * xj;
    }
  for (int k = 0; k < kColumns; ++k) {
    double s[kLanes];
    store_lanes(s, sums[k]);
    over_elements(
        whole, rows, [&]<class V>(Index j, V v) __attribute__((always_inline)) {
          double* const sj = s + (j - whole);
          store(sj, load<V>(sj) + elements(j, v)(k) * load<V>(x + j));
        });
    dots[k] = join(s);
  }
}

// The factors of a few columns, `step` apart: copies, which a store to the array cannot change.
template <int kColumns>
struct Factors {
  double of[kColumns];
};

template <int kColumns>
MATRIX_INLINE Factors<kColumns> factors(const double* f, Index step = 1) {
  Factors<kColumns> copies;
  for (int k = 0; k < kColumns; ++k) copies.of[k] = f[k * step];
  return copies;
}

template <int kColumns>
MATRIX_INLINE void dots_of(Index rows, const double* a, Index ld, const double* x, double* dots) {
  dots_with<kColumns>(
      rows, x, dots, [=]<class V>(Index j, V) __attribute__((always_inline)) {
        return [=](int k) __attribute__((always_inline)) {
          return load<V>(a + k * ld + j);
        };
      });
}

void column_dots(Index rows, Index cols, const double* a, Index ld, const double* x, double* dots) {
  Index k = 0;
  for (; k + 4 <= cols; k += 4) dots_of<4>(rows, a + k * ld, ld, x, dots + k);
  for (; k < cols; ++k) dots_of<1>(rows, a + k * ld, ld, x, dots + k);
}

// a(j,k) += u[j] * f[k]
template <int kColumns>
MATRIX_INLINE void add_outer_to(Index rows, double* a, Index ld, const double* u, const double* f) {
  const auto factor = factors<kColumns>(f);
  over_elements(
      0, rows, [=]<class V>(Index j, V) __attribute__((always_inline)) {
        const V uj = load<V>(u + j);
        for (int k = 0; k < kColumns; ++k)
          store(a + k * ld + j, load<V>(a + k * ld + j) + uj * factor.of[k]);
      });
}

void add_outer(Index rows, Index cols, double* a, Index ld, const double* u, const double* f) {
  Index k = 0;
  for (; k + 4 <= cols; k += 4) add_outer_to<4>(rows, a + k * ld, ld, u, f + k);
  for (; k < cols; ++k) add_outer_to<1>(rows, a + k * ld, ld, u, f + k);
}

template <int kColumns>
MATRIX_INLINE void reflect(Index lead, Index rows, double* a, Index ld, const double* x,
                           const double* v, double d, double g) {
  double f[kColumns];
  dots_of<kColumns>(rows - lead, a + lead, ld, x, f);
  for (double& fk : f) fk = fk / d / g;
  add_outer_to<kColumns>(rows, a, ld, v, f);
}

void reflect_columns(Index lead, Index rows, Index cols, double* a, Index ld, const double* x,
                     const double* v, double d, double g) {
  Index k = 0;
  for (; k + 4 <= cols; k += 4) reflect<4>(lead, rows, a + k * ld, ld, x, v, d, g);
  for (; k < cols; ++k) reflect<1>(lead, rows, a + k * ld, ld, x, v, d, g);
}

// --- Both steps of the bidiagonalization ---

// Columns 0, 8, 16... of a after the column step: their terms of one partial sum for each row.
template <bool kColumnStep, int kColumns>
MATRIX_INLINE void add_terms(Index rows, const double* a, Index ld, const double* f,
                             const double* u, const double* x, double* sums) {
  const Index stride = kLanes * ld;
  Factors<kColumns> fk = {};
  if constexpr (kColumnStep) fk = factors<kColumns>(f, kLanes);
  const auto xk = factors<kColumns>(x, kLanes);
  over_elements(
      0, rows, [=]<class V>(Index j, V) __attribute__((always_inline)) {
        V sum = load<V>(sums + j);
        for (int k = 0; k < kColumns; ++k) {
          V ajk = load<V>(a + k * stride + j);
          if constexpr (kColumnStep) ajk += load<V>(u + j) * fk.of[k];
          sum += ajk * xk.of[k];
        }
        store(sums + j, sum);
      });
}

// The same for those of the columns k, k + 8, k + 16 and k + 24 that exist.
template <bool kColumnStep>
void add_lane(Index rows, Index k, Index cols, const double* a, Index ld, const double* f,
              const double* u, const double* x, double* sums) {
  a += k * ld;
  x += k;
  if constexpr (kColumnStep) f += k;
  switch (smaller(4, (cols - k + kLanes - 1) / kLanes)) {
    case 1:
      return add_terms<kColumnStep, 1>(rows, a, ld, f, u, x, sums);
    case 2:
      return add_terms<kColumnStep, 2>(rows, a, ld, f, u, x, sums);
    case 3:
      return add_terms<kColumnStep, 3>(rows, a, ld, f, u, x, sums);
    default:
      return add_terms<kColumnStep, 4>(rows, a, ld, f, u, x, sums);
  }
}

template <bool kColumnStep>
void sums_of_rows(Index rows, Index cols, const double* a, Index ld, const double* f,
                  const double* u, const double* x, double* sums, double* t) {
  static_assert(kLanes == 8, "row_sums_work counts them");
  for (Index j = 0; j < kLanes * rows; ++j) sums[j] = 0.0;
  for (Index k = 0; k < cols; k += 4 * kLanes)
    for (Index q = 0; q < smaller(kLanes, cols - k); ++q)
      add_lane<kColumnStep>(rows, k + q, cols, a, ld, f, u, x, sums + q * rows);
  const auto pair = [=]<class V>(Index q, Index j, V) __attribute__((always_inline)) {
    return load<V>(sums + q * rows + j) + load<V>(sums + (q + 4) * rows + j);
  };
  over_elements(
      0, rows, [=]<class V>(Index j, V v) __attribute__((always_inline)) {
        store(t + j, (pair(0, j, v) + pair(2, j, v)) + (pair(1, j, v) + pair(3, j, v)));
      });
}

void row_sums(Index rows, Index cols, const double* a, Index ld, const double* f, const double* u,
              const double* x, double* sums, double* t) {
  for (Index j = 0; j < rows; j += kSumRows) {
    const Index count = smaller(kSumRows, rows - j);
    if (f != nullptr)
      sums_of_rows<true>(count, cols, a + j, ld, f, u + j, x, sums, t + j);
    else
      sums_of_rows<false>(count, cols, a + j, ld, f, u, x, sums, t + j);
  }
}

// Both updates of a few columns, and their dot products with x, which replace f.
template <int kColumns>
MATRIX_INLINE void update_and_dot(Index rows, double* a, Index ld, double* f, const double* u,
                                  const double* t, const double* y, const double* x) {
  const auto fk = factors<kColumns>(f);
  const auto yk = factors<kColumns>(y);
  dots_with<kColumns>(
      rows, x, f, [=]<class V>(Index j, V) __attribute__((always_inline)) {
        const V uj = load<V>(u + j);
        const V tj = load<V>(t + j);
        return [=](int k) __attribute__((always_inline)) {
          V ajk = load<V>(a + k * ld + j) + uj * fk.of[k];
          ajk += tj * yk.of[k];
          store(a + k * ld + j, ajk);
          return ajk;
        };
      });
}

void reflect_both(Index rows, Index cols, double* a, Index ld, double* f, const double* u,
                  const double* t, const double* y, const double* x) {
  if (u != nullptr && t != nullptr && x != nullptr) {
    // As many columns together as leave their sums in registers. From the last column on: it was
    // the last one that the sums of rows have read.
    Index k = cols;
    for (; k % 4 != 0; --k)
      update_and_dot<1>(rows, a + (k - 1) * ld, ld, f + k - 1, u, t, y + k - 1, x);
    if (k % kWidth != 0) {
      k -= 4;
      update_and_dot<4>(rows, a + k * ld, ld, f + k, u, t, y + k, x);
    }
    for (; k > 0; k -= kWidth)
      update_and_dot<kWidth>(rows, a + (k - kWidth) * ld, ld, f + k - kWidth, u, t, y + k - kWidth,
                             x);
    return;
  }
  if (u != nullptr) add_outer(rows, cols, a, ld, u, f);
  if (t != nullptr) add_outer(rows, cols, a, ld, t, y);
  if (x != nullptr) column_dots(rows, cols, a, ld, x, f);
}

}  // namespace

const SvdKernels svd_kernels_table = {row_sums, reflect_both, reflect_columns};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
