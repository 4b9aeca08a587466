#include "pack/numeric/reflection_kernels.hpp"

#include "pack/numeric/lanes/column_products.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// The factors of a reflection from its sums.
template <int K>
MATRIX_INLINE void divide_sums(const ColumnReflection& r, double* f) {
  for (int k = 0; k < K; ++k) f[k] = f[k] / r.d / r.g;
}

// One reflection of K columns, whose factors are f, and in the same pass the sums of the next one.
// The eights of rows in which the sums begin before the reflection does are reflected beforehand.
template <int K>
MATRIX_INLINE void reflect_and_sum(Index rows, RealView a, const ColumnReflection& now,
                                   const ColumnReflection& next, double* f) {
  const Index ahead = now.row - next.sum_row;
  const Index done = smaller((ahead + kLanes - 1) / kLanes * kLanes, rows - next.sum_row);
  const RealView summed = a.from(next.sum_row, 0);
  add_outer_to<K>(done - ahead, summed.from(ahead, 0), now.v, f);
  const auto factor = factors<K>(f);
  dots_with<K>(rows - next.sum_row, next.x, f, [=]<class V>(Index j, V) MATRIX_INLINE_LAMBDA {
    const bool reflects = j >= done;
    const V vj = reflects ? load<V>(now.v + (j - ahead)) : V{};
    return [=](int k) MATRIX_INLINE_LAMBDA {
      V ajk = load<V>(summed.column(k) + j);
      if (reflects) {
        ajk += vj * factor.of[k];
        store(summed.column(k) + j, ajk);
      }
      return ajk;
    };
  });
}

void reflect_columns(Index rows, Index cols, RealView a, const ColumnReflection* reflections,
                     Index count) {
  by_fours(0, cols, [=]<int K>(Index first, Group<K>) MATRIX_INLINE_LAMBDA {
    const RealView columns = a.from(0, first);
    const Index sum_row = reflections[0].sum_row;
    double f[K];
    dots_of<K>(rows - sum_row, columns.from(sum_row, 0), reflections[0].x, f);
    divide_sums<K>(reflections[0], f);
    for (Index i = 1; i < count; ++i) {
      reflect_and_sum<K>(rows, columns, reflections[i - 1], reflections[i], f);
      divide_sums<K>(reflections[i], f);
    }
    const ColumnReflection& last = reflections[count - 1];
    add_outer_to<K>(rows - last.row, columns.from(last.row, 0), last.v, f);
  });
}

}  // namespace

const ReflectionKernels reflection_kernels_table = {reflect_columns};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
