#include "norms/norm_kernels.hpp"

#include "pack/numeric/lanes/tiles.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// --- Sums of magnitudes ---

template <class V, bool kComplex>
MATRIX_INLINE V element_magnitude(const ConstComplexView& a, Index at) {
  if constexpr (kComplex)
    return scaled_modulus(load<V>(a.re + at), load<V>(a.im + at));
  else
    return magnitude(load<V>(a.re + at));
}

// One chain of additions a column: kSide columns in a vector, and as many vectors side by side as
// hold the columns, at least kSide of them. The last vector may overlap the one before it.
template <int kVectors>
MATRIX_INLINE void real_column_sums(Index rows, Index cols, const double* x, Index ld,
                                    double* sums) {
  if constexpr (kVectors > 1)
    if (cols <= kSide * (kVectors - 1))
      return real_column_sums<kVectors - 1>(rows, cols, x, ld, sums);
  const auto column = [=](int p) MATRIX_INLINE_LAMBDA {
    return p + 1 < kVectors ? Index{kSide} * p : cols - kSide;
  };
  Row s[kVectors] = {};
  Index j = 0;
  for (; j + 2 <= rows; j += 2)
    for (int p = 0; p < kVectors; ++p) {
      Row row[2];
      load_two_rows(x + column(p) * ld + j, ld, row);
      s[p] += magnitude(row[0]);
      s[p] += magnitude(row[1]);
    }
  for (int p = 0; p < kVectors; ++p) {
    if (j < rows) s[p] += magnitude(load_row<Row>(x + column(p) * ld + j, ld));
    store(sums + column(p), s[p]);
  }
}

double real_column_sum(Index rows, const double* x) {
  double sum = 0.0;
  for (Index j = 0; j < rows; ++j) sum += __builtin_fabs(x[j]);
  return sum;
}

void complex_column_sum(Index rows, const ConstComplexView& a, Index at, double* sum) {
  constexpr Index kStretch = 64;
  double moduli[kStretch];
  *sum = 0.0;
  for (Index j = 0; j < rows; j += kStretch) {
    const Index count = smaller(kStretch, rows - j);
    over_elements(0, count, [&]<class V>(Index i, V) MATRIX_INLINE_LAMBDA {
      store(moduli + i, element_magnitude<V, true>(a, at + j + i));
    });
    for (Index i = 0; i < count; ++i) *sum += moduli[i];
  }
}

void column_sums(Index rows, Index cols, const ConstComplexView& a, double* sums) {
  if (a.im != nullptr) {
    for (Index k = 0; k < cols; ++k) complex_column_sum(rows, a, k * a.ld, sums + k);
    return;
  }
  if (cols >= kSide) return real_column_sums<kSumColumns / kSide>(rows, cols, a.re, a.ld, sums);
  for (Index k = 0; k < cols; ++k) sums[k] = real_column_sum(rows, a.re + k * a.ld);
}

// Columns whose terms are added while a stretch of sums is in a register.
constexpr Index kStretchColumns = 32;

template <bool kComplex>
void sum_rows(Index rows, Index cols, const ConstComplexView& a, double* sums) {
  for (Index k0 = 0; k0 < cols; k0 += kStretchColumns) {
    const Index k1 = smaller(k0 + kStretchColumns, cols);
    over_elements(0, rows, [&]<class V>(Index j, V) MATRIX_INLINE_LAMBDA {
      V s = {};
      if (k0 > 0) s = load<V>(sums + j);
      for (Index k = k0; k < k1; ++k) s += element_magnitude<V, kComplex>(a, k * a.ld + j);
      store(sums + j, s);
    });
  }
}

void row_sums(Index rows, Index cols, const ConstComplexView& a, double* sums) {
  if (a.im == nullptr)
    sum_rows<false>(rows, cols, a, sums);
  else
    sum_rows<true>(rows, cols, a, sums);
}

double largest_sum(double largest, Index n, const double* sums) {
  const auto larger_of = [](double x, double y) { return y > x ? y : x; };
  Index k = 0;
  if (n >= 2 * kWidth) {
    Vector most = largest - Vector{};
    for (; k + kWidth <= n; k += kWidth) {
      const Vector x = load_vector(sums + k);
      most = x > most ? x : most;
    }
    double lanes[kWidth];
    store_vector(lanes, most);
    for (const double lane : lanes) largest = larger_of(largest, lane);
  }
  for (; k < n; ++k) largest = larger_of(largest, sums[k]);
  return largest;
}

// --- A^H A ---

constexpr int kPanelVectors = 2;
constexpr Index kPanel = kPanelVectors * kWidth;
static_assert(2 * kPanel <= kGramWork);

// Columns j...j + kPanel - 1 of a, row by row. Columns beyond n repeat the last one.
void pack_panel(Index n, Index j, const double* x, Index ld, double* panel) {
  for (Index q = 0; q < kPanel; ++q) {
    const double* const column = x + smaller(j + q, n - 1) * ld;
    for (Index k = 0; k < n; ++k) panel[k * kPanel + q] = column[k];
  }
}

// Rows j... of kColumns columns i of the result: the sums over k, from their first terms on.
template <int kColumns>
MATRIX_INLINE void gram_block(Index n, const double* panel_x, const double* panel_y,
                              const double* xi, const double* yi, Index ld, double (*re)[kPanel],
                              double (*im)[kPanel]) {
  Vector sum_re[kColumns][kPanelVectors] = {};
  Vector sum_im[kColumns][kPanelVectors] = {};
  for (Index k = 0; k < n; ++k)
    for (int p = 0; p < kPanelVectors; ++p) {
      const Vector xj = load_vector(panel_x + k * kPanel + p * kWidth);
      const Vector yj = load_vector(panel_y + k * kPanel + p * kWidth);
      for (int i = 0; i < kColumns; ++i) {
        const double x = xi[i * ld + k];
        const double y = yi[i * ld + k];
        sum_re[i][p] += x * xj + y * yj;
        sum_im[i][p] += x * yj - xj * y;
      }
    }
  for (int i = 0; i < kColumns; ++i)
    for (int p = 0; p < kPanelVectors; ++p) {
      store_vector(re[i] + p * kWidth, sum_re[i][p]);
      store_vector(im[i] + p * kWidth, sum_im[i][p]);
    }
}

void gram(Index n, const ConstComplexView& a, double* re, double* im, double* work) {
  double* const panel_x = work;
  double* const panel_y = work + n * kPanel;
  double block_re[2][kPanel];
  double block_im[2][kPanel];
  for (Index j = 0; j < n; j += kPanel) {
    pack_panel(n, j, a.re, a.ld, panel_x);
    pack_panel(n, j, a.im, a.ld, panel_y);
    const Index end = smaller(j + kPanel, n);
    for (Index i = 0; i < end; i += 2) {
      const double* const xi = a.re + i * a.ld;
      const double* const yi = a.im + i * a.ld;
      const Index columns = smaller(2, end - i);
      if (columns == 2)
        gram_block<2>(n, panel_x, panel_y, xi, yi, a.ld, block_re, block_im);
      else
        gram_block<1>(n, panel_x, panel_y, xi, yi, a.ld, block_re, block_im);
      for (Index c = i; c < i + columns; ++c)
        for (Index r = c > j ? c : j; r < end; ++r) {
          re[c * n + r] = block_re[c - i][r - j];
          im[c * n + r] = block_im[c - i][r - j];
        }
    }
  }
}

}  // namespace

const NormKernels norm_kernels_table = {column_sums, row_sums, largest_sum, gram};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
