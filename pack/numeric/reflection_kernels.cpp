#include "pack/numeric/reflection_kernels.hpp"

#include "pack/numeric/lanes/column_products.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

void reflect_columns(Index lead, Index rows, Index cols, RealView a, const double* x,
                     const double* v, double d, double g) {
  by_fours(0, cols, [=]<int K>(Index k, Group<K>) MATRIX_INLINE_LAMBDA {
    double f[K];
    dots_of<K>(rows - lead, a.from(lead, k), x, f);
    for (double& fk : f) fk = fk / d / g;
    add_outer_to<K>(rows, a.from(0, k), v, f);
  });
}

}  // namespace

const ReflectionKernels reflection_kernels_table = {reflect_columns};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
