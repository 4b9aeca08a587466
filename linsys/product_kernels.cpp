#include "linsys/product_kernels.hpp"

#include "pack/numeric/runs.hpp"

// A tile of C stays in registers while the terms are subtracted from it one by one: a column of the
// tile of A times a broadcast element of B. With multiply and add pipes side by side, as many
// processors have them, this runs at the pace of fused operations, without their rounding.

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// The H x N tile at `c` less the product of the H x k strip at `a` and the k x N strip at `b`.
template <int H, int N>
__attribute__((noinline)) void subtract_tile(Index k, const double* a, Index lda, const double* b,
                                             Steps b_steps, double* c, Index ldc) {
  Run<H> tile[N];
  MATRIX_UNROLL
  for (int j = 0; j < N; ++j) tile[j] = load<H>(c + j * ldc);
  for (Index t = 0; t < k; ++t) {
    const Run<H> column = load<H>(a);
    MATRIX_UNROLL
    for (int j = 0; j < N; ++j) {
      const double factor = b[j * b_steps.across];
      MATRIX_UNROLL
      for (int v = 0; v < Run<H>::kVectors; ++v) tile[j].part[v] -= column.part[v] * factor;
    }
    a += lda;
    b += b_steps.down;
  }
  MATRIX_UNROLL
  for (int j = 0; j < N; ++j) store<H>(c + j * ldc, tile[j]);
}

template <int H, int N>
__attribute__((noinline)) void subtract_tile(Index k, ConstSplit a, Index lda, ConstSplit b,
                                             Steps b_steps, Split c, Index ldc) {
  Run<H> re[N];
  Run<H> im[N];
  MATRIX_UNROLL
  for (int j = 0; j < N; ++j) {
    re[j] = load<H>(c.re + j * ldc);
    im[j] = load<H>(c.im + j * ldc);
  }
  ConstSplit b_again = b;
#if defined(__AVX512F__)
  // Each element of B is read twice: as an operand of a multiplication that broadcasts it, which
  // costs nothing, where one broadcast into a register would cost an arithmetic slot. The compiler
  // must not see that both are the same.
  asm("" : "+r"(b_again.re), "+r"(b_again.im));
#endif
  for (Index t = 0; t < k; ++t) {
    const Run<H> a_re = load<H>(a.re);
    const Run<H> a_im = load<H>(a.im);
    MATRIX_UNROLL
    for (int j = 0; j < N; ++j) {
      const Index at = j * b_steps.across;
      MATRIX_UNROLL
      for (int v = 0; v < Run<H>::kVectors; ++v) {
        re[j].part[v] -= a_re.part[v] * b.re[at] - a_im.part[v] * b.im[at];
        im[j].part[v] -= a_re.part[v] * b_again.im[at] + a_im.part[v] * b_again.re[at];
      }
    }
    a = a + lda;
    b = b + b_steps.down;
    b_again = b_again + b_steps.down;
  }
  MATRIX_UNROLL
  for (int j = 0; j < N; ++j) {
    store<H>(c.re + j * ldc, re[j]);
    store<H>(c.im + j * ldc, im[j]);
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
template <int H, int N, class A, class C>
MATRIX_LANES_INLINE void subtract_rows(Index m, Index k, A a, Index lda, A b, Steps b_steps, C c,
                                       Index ldc) {
  Index i = 0;
  for (; i + H <= m; i += H) subtract_tile<H, N>(k, a + i, lda, b, b_steps, c + i, ldc);
  if constexpr (H > 1)
    if (i < m) subtract_rows<H / 2, N>(m - i, k, a + i, lda, b, b_steps, c + i, ldc);
}

template <int N>
MATRIX_LANES_INLINE void pack(Index k, const double* b, Steps b_steps, double* packed) {
  for (Index t = 0; t < k; ++t) MATRIX_UNROLL
  for (int j = 0; j < N; ++j) packed[t * N + j] = b[t * b_steps.down + j * b_steps.across];
}

template <int N>
void subtract_strip(Index m, Index k, const double* a, Index lda, const double* b, Steps b_steps,
                    double* c, Index ldc) {
  constexpr int kRows = tile_rows(kTileVectors, N);
  if (m < kRowsToPack) {
    subtract_rows<kRows, N>(m, k, a, lda, b, b_steps, c, ldc);
    return;
  }
  double packed[kTerms * N];
  pack<N>(k, b, b_steps, packed);
  subtract_rows<kRows, N>(m, k, a, lda, static_cast<const double*>(packed), Steps{N, 1}, c, ldc);
}

template <int N>
void subtract_strip(Index m, Index k, ConstSplit a, Index lda, ConstSplit b, Steps b_steps, Split c,
                    Index ldc) {
  constexpr int kRows = tile_rows(kComplexTileVectors, N);
  if (m < kRowsToPack) {
    subtract_rows<kRows, N>(m, k, a, lda, b, b_steps, c, ldc);
    return;
  }
  double packed_re[kTerms * N];
  double packed_im[kTerms * N];
  pack<N>(k, b.re, b_steps, packed_re);
  pack<N>(k, b.im, b_steps, packed_im);
  subtract_rows<kRows, N>(m, k, a, lda, ConstSplit(packed_re, packed_im), Steps{N, 1}, c, ldc);
}

// All strips of N columns, then those of fewer.
template <int N, class A, class C>
MATRIX_LANES_INLINE void subtract_columns(Index m, Index n, Index k, A a, Index lda, A b,
                                          Steps b_steps, C c, Index ldc) {
  Index j = 0;
  for (; j + N <= n; j += N)
    subtract_strip<N>(m, k, a, lda, b + j * b_steps.across, b_steps, c + j * ldc, ldc);
  if constexpr (N > 1)
    if (j < n)
      subtract_columns<N / 2>(m, n - j, k, a, lda, b + j * b_steps.across, b_steps, c + j * ldc,
                              ldc);
}

MATRIX_LANES_INLINE Index smaller(Index a, Index b) {
  return a < b ? a : b;
}

template <int N, class A, class C>
MATRIX_LANES_INLINE void subtract_blocks(Index m, Index n, Index k, A a, Index lda, A b,
                                         Steps b_steps, C c, Index ldc) {
  for (Index t = 0; t < k; t += kTerms)
    for (Index i = 0; i < m; i += kBlockRows)
      subtract_columns<N>(smaller(kBlockRows, m - i), n, smaller(kTerms, k - t), a + (i + t * lda),
                          lda, b + t * b_steps.down, b_steps, c + i, ldc);
}

void subtract_product(Index m, Index n, Index k, const double* a, Index lda, const double* b,
                      Steps b_steps, double* c, Index ldc) {
  subtract_blocks<kTileColumns>(m, n, k, a, lda, b, b_steps, c, ldc);
}

void subtract_complex_product(Index m, Index n, Index k, ConstSplit a, Index lda, ConstSplit b,
                              Steps b_steps, Split c, Index ldc) {
  subtract_blocks<kComplexTileColumns>(m, n, k, a, lda, b, b_steps, c, ldc);
}

}  // namespace

const ProductKernels product_kernels_table = {subtract_product, subtract_complex_product};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
