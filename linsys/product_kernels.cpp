#include "linsys/product_kernels.hpp"

#include "pack/numeric/lanes/runs.hpp"

// A tile of C stays in registers while the terms are subtracted from it one by one: a column of the
// tile of A times a broadcast element of B. With multiply and add pipes side by side, as many
// processors have them, this runs at the pace of fused operations, without their rounding.

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// The H x N tile C less the product of the H x k strip A and the k x N strip B.
template <int H, int N>
__attribute__((noinline)) void subtract_tile(Index k, ConstRealView a, ConstRealView b,
                                             Index b_down, RealView c) {
  Run<H> tile[N];
  MATRIX_UNROLL
  for (int j = 0; j < N; ++j) tile[j] = load<Run<H>>(c.column(j));
  for (Index t = 0; t < k; ++t) {
    const Run<H> column = load<Run<H>>(a.x);
    MATRIX_UNROLL
    for (int j = 0; j < N; ++j) {
      const double factor = b(0, j);
      MATRIX_UNROLL
      for (int v = 0; v < Run<H>::kVectors; ++v) tile[j].part[v] -= column.part[v] * factor;
    }
    a.x += a.ld;
    b.x += b_down;
  }
  MATRIX_UNROLL
  for (int j = 0; j < N; ++j) store(c.column(j), tile[j]);
}

template <int H, int N>
__attribute__((noinline)) void subtract_tile(Index k, ConstComplexView a, ConstComplexView b,
                                             Index b_down, ComplexView c) {
  Run<H> re[N];
  Run<H> im[N];
  MATRIX_UNROLL
  for (int j = 0; j < N; ++j) {
    re[j] = load<Run<H>>(c.column(j).re);
    im[j] = load<Run<H>>(c.column(j).im);
  }
  ConstComplexView b_again = b;
#if defined(__AVX512F__)
  // Each element of B is read twice: as an operand of a multiplication that broadcasts it, which
  // costs nothing, where one broadcast into a register would cost an arithmetic slot. The compiler
  // must not see that both are the same.
  asm("" : "+r"(b_again.re), "+r"(b_again.im));
#endif
  for (Index t = 0; t < k; ++t) {
    const Run<H> a_re = load<Run<H>>(a.re);
    const Run<H> a_im = load<Run<H>>(a.im);
    MATRIX_UNROLL
    for (int j = 0; j < N; ++j) {
      const Index at = j * b.ld;
      MATRIX_UNROLL
      for (int v = 0; v < Run<H>::kVectors; ++v) {
        re[j].part[v] -= a_re.part[v] * b.re[at] - a_im.part[v] * b.im[at];
        im[j].part[v] -= a_re.part[v] * b_again.im[at] + a_im.part[v] * b_again.re[at];
      }
    }
    a = a + a.ld;
    b = b + b_down;
    b_again = b_again + b_down;
  }
  MATRIX_UNROLL
  for (int j = 0; j < N; ++j) {
    store(c.column(j).re, re[j]);
    store(c.column(j).im, im[j]);
  }
}

// The largest tiles that the registers of each set hold, measured to be the fastest: columns, and
// vectors that one tile occupies.
#if defined(__AVX512F__)
constexpr int kTileColumns = 16;
constexpr int kTileVectors = 16;
constexpr int kComplexTileColumns = 8;
constexpr int kComplexTileVectors = 8;
#elif defined(__AVX__)
constexpr int kTileColumns = 6;
constexpr int kTileVectors = 12;
constexpr int kComplexTileColumns = 4;
constexpr int kComplexTileVectors = 4;
#else
constexpr int kTileColumns = 4;
constexpr int kTileVectors = 8;
constexpr int kComplexTileColumns = 4;
constexpr int kComplexTileVectors = 4;
#endif

// The part of A in use stays in the second cache: terms subtracted in one go (few, for the sake of
// the page table: each column of A lies on a page of its own), and rows.
constexpr Index kTerms = 64;
constexpr Index kBlockRows = 512;

// Strips of fewer rows than this many are not worth a packed copy of B.
constexpr Index kRowsToPack = 48;

// Rows of a tile of N columns that occupies `vectors` vectors, but at most four of them a column.
constexpr int tile_rows(int vectors, int N) {
  const int a_column = vectors / N;
  return kWidth * (a_column > 4 ? 4 : a_column > 2 ? (a_column / 4 ? 4 : 2) : a_column);
}

// All tiles of N columns: as many of H rows as there are, then one each of the smaller heights.
template <int H, int N, class ConstView, class View>
MATRIX_INLINE void subtract_rows(Index m, Index k, ConstView a, ConstView b, Index b_down, View c) {
  Index i = 0;
  for (; i + H <= m; i += H) subtract_tile<H, N>(k, a.from(i, 0), b, b_down, c.from(i, 0));
  if constexpr (H > 1)
    if (i < m) subtract_rows<H / 2, N>(m - i, k, a.from(i, 0), b, b_down, c.from(i, 0));
}

template <int N>
MATRIX_INLINE void pack(Index k, const double* b, Index down, Index across, double* packed) {
  for (Index t = 0; t < k; ++t) MATRIX_UNROLL
  for (int j = 0; j < N; ++j) packed[t * N + j] = b[t * down + j * across];
}

template <int N>
void subtract_strip(Index m, Index k, ConstRealView a, ConstRealView b, Index b_down, RealView c) {
  constexpr int kRows = tile_rows(kTileVectors, N);
  if (m < kRowsToPack) {
    subtract_rows<kRows, N>(m, k, a, b, b_down, c);
    return;
  }
  double packed[kTerms * N];
  pack<N>(k, b.x, b_down, b.ld, packed);
  subtract_rows<kRows, N>(m, k, a, ConstRealView{packed, 1}, N, c);
}

template <int N>
void subtract_strip(Index m, Index k, ConstComplexView a, ConstComplexView b, Index b_down,
                    ComplexView c) {
  constexpr int kRows = tile_rows(kComplexTileVectors, N);
  if (m < kRowsToPack) {
    subtract_rows<kRows, N>(m, k, a, b, b_down, c);
    return;
  }
  double packed_re[kTerms * N];
  double packed_im[kTerms * N];
  pack<N>(k, b.re, b_down, b.ld, packed_re);
  pack<N>(k, b.im, b_down, b.ld, packed_im);
  subtract_rows<kRows, N>(m, k, a, ConstComplexView{packed_re, packed_im, 1}, N, c);
}

// All strips of N columns, then those of fewer.
template <int N, class ConstView, class View>
MATRIX_INLINE void subtract_columns(Index m, Index n, Index k, ConstView a, ConstView b,
                                    Index b_down, View c) {
  Index j = 0;
  for (; j + N <= n; j += N) subtract_strip<N>(m, k, a, b.from(0, j), b_down, c.from(0, j));
  if constexpr (N > 1)
    if (j < n) subtract_columns<N / 2>(m, n - j, k, a, b.from(0, j), b_down, c.from(0, j));
}

template <int N, class ConstView, class View>
MATRIX_INLINE void subtract_blocks(Index m, Index n, Index k, ConstView a, ConstView b,
                                   Index b_down, View c) {
  for (Index t = 0; t < k; t += kTerms)
    for (Index i = 0; i < m; i += kBlockRows)
      subtract_columns<N>(smaller(kBlockRows, m - i), n, smaller(kTerms, k - t), a.from(i, t),
                          b.from(t * b_down, 0), b_down, c.from(i, 0));
}

void subtract_product(Index m, Index n, Index k, ConstRealView a, ConstRealView b, Index b_down,
                      RealView c) {
  subtract_blocks<kTileColumns>(m, n, k, a, b, b_down, c);
}

void subtract_complex_product(Index m, Index n, Index k, const ConstComplexView& a,
                              const ConstComplexView& b, Index b_down, const ComplexView& c) {
  subtract_blocks<kComplexTileColumns>(m, n, k, a, b, b_down, c);
}

}  // namespace

const ProductKernels product_kernels_table = {subtract_product, subtract_complex_product};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
