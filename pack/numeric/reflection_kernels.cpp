#include "pack/numeric/reflection_kernels.hpp"

#include "pack/numeric/lanes/column_products.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Fewer rows of four columns are in the first cache, where two simple passes are no slower than
// one.
constexpr Index kFewestInOnePass = 1024;

// The factors of a reflection from its sums.
template <int K>
MATRIX_INLINE void divide_sums(const ColumnReflection& r, double* f) {
  if (r.d == 1.0 && r.g == 1.0) return;  // Two divisions last as long as a short sum.
  for (int k = 0; k < K; ++k) f[k] = f[k] / r.d / r.g;
}

// One reflection of K columns, whose factors are f, and in the same pass the sums of the next one.
// The eights of rows in which the sums begin before the reflection does are reflected beforehand.
template <int K>
void reflect_and_sum(Index rows, RealView a, const ColumnReflection& now,
                     const ColumnReflection& next, double* f) {
  const RealView summed = a.from(next.sum_row, 0);
  const Index count = rows - next.sum_row;
  const Index head = head_of(summed, count);
  const Index ahead = now.row - next.sum_row;
  const Index eights = larger(ahead - head + kLanes - 1, 0) / kLanes;
  const Index done = smaller(head + eights * kLanes, count);
  add_outer_to<K>(done - ahead, summed.from(ahead, 0), now.v, f);
  const auto factor = factors<K>(f);
  dots_with<K>(count, head, next.x, f, [=]<class V>(Index j, V) MATRIX_INLINE_LAMBDA {
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

template <int K>
MATRIX_INLINE void sum(Index rows, RealView a, const ColumnReflection& r, double* f) {
  dots_of<K>(rows - r.sum_row, a.from(r.sum_row, 0), r.x, f);
}
template <int K>
MATRIX_INLINE void reflect(Index rows, RealView a, const ColumnReflection& r, const double* f) {
  add_outer_to<K>(rows - r.row, a.from(r.row, 0), r.v, f);
}

// All reflections of K columns. A function of its own: where nothing is optimised, what is inlined
// shares no stack.
template <int K>
void reflect_group(Index rows, RealView columns, const ColumnReflection* reflections, Index count) {
  double f[K];
  sum<K>(rows, columns, reflections[0], f);
  divide_sums<K>(reflections[0], f);
  for (Index i = 1; i < count; ++i) {
    const ColumnReflection& now = reflections[i - 1];
    const ColumnReflection& next = reflections[i];
    if (rows >= kFewestInOnePass) {
      reflect_and_sum<K>(rows, columns, now, next, f);
    } else {
      reflect<K>(rows, columns, now, f);
      sum<K>(rows, columns, next, f);
    }
    divide_sums<K>(next, f);
  }
  reflect<K>(rows, columns, reflections[count - 1], f);
}

void reflect_columns(Index rows, Index cols, RealView a, const ColumnReflection* reflections,
                     Index count) {
  by_fours(0, cols, [=]<int K>(Index first, Group<K>) {
    reflect_group<K>(rows, a.from(0, first), reflections, count);
  });
}

}  // namespace

const ReflectionKernels reflection_kernels_table = {reflect_columns};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
