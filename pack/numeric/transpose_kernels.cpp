#include "pack/numeric/transpose_kernels.hpp"

#include "pack/numeric/lanes/tiles.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Square tiles of this order keep the lines that are read and those that are written in cache.
constexpr Index kTransposed = 16;

void transpose(Index rows, Index cols, ConstRealView a, RealView out) {
  for (Index j0 = 0; j0 < cols; j0 += kTransposed) {
    const Index j1 = smaller(j0 + kTransposed, cols);
    for (Index i0 = 0; i0 < rows; i0 += kTransposed) {
      const Index i1 = smaller(i0 + kTransposed, rows);
      over_columns<1>(j0, j1, [=]<class V>(Index j, Columns<V, 1>) MATRIX_INLINE_LAMBDA {
        Index i = i0;
        for (; i + kLanesOf<V> <= i1; i += kLanesOf<V>) {
          const Tile<V> tile = load_tile<V>(a.column(j) + i, a.ld);
          for (int k = 0; k < kLanesOf<V>; ++k) store(out.column(i + k) + j, tile.row[k]);
        }
        for (; i < i1; ++i) store(out.column(i) + j, load_row<V>(a.column(j) + i, a.ld));
      });
    }
  }
}

}  // namespace

const TransposeKernels transpose_kernels_table = {transpose};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
