#include "svd/svd_kernels.hpp"

#include "pack/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

using Index = std::ptrdiff_t;

Index smaller(Index a, Index b) {
  return a < b ? a : b;
}

// --- Dot products and rank-one updates of several columns at once ---

template <int kColumns>
MATRIX_LANES_INLINE void dots_of(Index rows, const double* a, Index ld, const double* x,
                                 double* dots) {
  Lanes sums[kColumns] = {};
  Index whole = 0;
  for (; whole + kLanes <= rows; whole += kLanes)
    for (int p = 0; p < kParts; ++p) {
      const Index j = whole + p * kWidth;
      const Vector xj = load_vector(x + j);
      for (int k = 0; k < kColumns; ++k) sums[k].part[p] += load_vector(a + k * ld + j) * xj;
    }
  for (int k = 0; k < kColumns; ++k) {
    double s[kLanes];
    store_lanes(s, sums[k]);
    over_elements(
        whole, rows, [&]<class V>(Index j, V) __attribute__((always_inline)) {
          double* const sj = s + (j - whole);
          store(sj, load<V>(sj) + load<V>(a + k * ld + j) * load<V>(x + j));
        });
    dots[k] = join(s);
  }
}

void column_dots(Index rows, Index cols, const double* a, Index ld, const double* x, double* dots) {
  Index k = 0;
  for (; k + 4 <= cols; k += 4) dots_of<4>(rows, a + k * ld, ld, x, dots + k);
  for (; k < cols; ++k) dots_of<1>(rows, a + k * ld, ld, x, dots + k);
}

// a(j,k) += u[j] * f[k]
template <int kColumns>
MATRIX_LANES_INLINE void add_outer_to(Index rows, double* a, Index ld, const double* u,
                                      const double* f) {
  over_elements(
      0, rows, [&]<class V>(Index j, V) __attribute__((always_inline)) {
        const V uj = load<V>(u + j);
        for (int k = 0; k < kColumns; ++k)
          store(a + k * ld + j, load<V>(a + k * ld + j) + uj * f[k]);
      });
}

void add_outer(Index rows, Index cols, double* a, Index ld, const double* u, const double* f) {
  Index k = 0;
  for (; k + 4 <= cols; k += 4) add_outer_to<4>(rows, a + k * ld, ld, u, f + k);
  for (; k < cols; ++k) add_outer_to<1>(rows, a + k * ld, ld, u, f + k);
}

template <int kColumns>
MATRIX_LANES_INLINE void reflect(Index lead, Index rows, double* a, Index ld, const double* x,
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

// Rows that are taken together: their partial sums stay in the first cache, and their part of the
// matrix in the second, from the column step to the row step.
constexpr Index kStepRows = 128;

// Columns 0, 8, 16... of a: the column step, and their terms of one partial sum for each row.
template <bool kColumnStep, int kColumns>
MATRIX_LANES_INLINE void update_and_sum(Index rows, double* a, Index ld, const double* f,
                                        const double* u, const double* x, double* sums) {
  const Index stride = kLanes * ld;
  over_elements(
      0, rows, [&]<class V>(Index j, V) __attribute__((always_inline)) {
        V sum = load<V>(sums + j);
        for (int k = 0; k < kColumns; ++k) {
          V ajk = load<V>(a + k * stride + j);
          if constexpr (kColumnStep) {
            ajk += load<V>(u + j) * f[k * kLanes];
            store(a + k * stride + j, ajk);
          }
          sum += ajk * x[k * kLanes];
        }
        store(sums + j, sum);
      });
}

// The same for those of the columns k, k + 8, k + 16 and k + 24 that exist.
template <bool kColumnStep>
void update_lane(Index rows, Index k, Index cols, double* a, Index ld, const double* f,
                 const double* u, const double* x, double* sums) {
  a += k * ld;
  x += k;
  if constexpr (kColumnStep) f += k;
  switch (smaller(4, (cols - k + kLanes - 1) / kLanes)) {
    case 1:
      return update_and_sum<kColumnStep, 1>(rows, a, ld, f, u, x, sums);
    case 2:
      return update_and_sum<kColumnStep, 2>(rows, a, ld, f, u, x, sums);
    case 3:
      return update_and_sum<kColumnStep, 3>(rows, a, ld, f, u, x, sums);
    default:
      return update_and_sum<kColumnStep, 4>(rows, a, ld, f, u, x, sums);
  }
}

template <bool kColumnStep>
void reflect_rows(Index rows, Index cols, double* a, Index ld, const double* f, const double* u,
                  const double* x, const double* y) {
  double sums[kLanes][kStepRows];
  for (auto& lane : sums)
    for (Index j = 0; j < rows; ++j) lane[j] = 0.0;
  for (Index k = 0; k < cols; k += 4 * kLanes)
    for (Index q = 0; q < smaller(kLanes, cols - k); ++q)
      update_lane<kColumnStep>(rows, k + q, cols, a, ld, f, u, x, sums[q]);
  double t[kStepRows];
  for (Index j = 0; j < rows; ++j)
    t[j] = ((sums[0][j] + sums[4][j]) + (sums[2][j] + sums[6][j])) +
           ((sums[1][j] + sums[5][j]) + (sums[3][j] + sums[7][j]));
  add_outer(rows, cols, a, ld, t, y);
}

void reflect_both(Index rows, Index cols, double* a, Index ld, const double* f, const double* u,
                  const double* x, const double* y) {
  for (Index j = 0; j < rows; j += kStepRows) {
    const Index count = smaller(kStepRows, rows - j);
    if (f != nullptr)
      reflect_rows<true>(count, cols, a + j, ld, f, u + j, x, y);
    else
      reflect_rows<false>(count, cols, a + j, ld, f, u, x, y);
  }
}

}  // namespace

const SvdKernels svd_kernels_table = {column_dots, reflect_both, reflect_columns};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
