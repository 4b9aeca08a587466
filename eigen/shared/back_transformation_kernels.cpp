#include "eigen/shared/back_transformation_kernels.hpp"

#include "pack/numeric/lanes/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

struct Product {
  ConstRealView z;
  ConstRealView x;
  const Index* count;
  RealView out;
};

// kCols columns of kVectors * kWidth rows from row i on. The sums stay in registers.
template <int kCols, int kVectors>
MATRIX_INLINE void combine_rows(const Product& p, Index i) {
  Index common = p.count[0];
  for (int j = 1; j < kCols; ++j) common = smaller(p.count[j], common);
  Vector sums[kCols][kVectors] = {};
  for (Index k = 0; k < common; ++k) {
    for (int b = 0; b < kVectors; ++b) {
      const Vector z = load_vector(p.z.column(k) + i + b * kWidth);
      for (int j = 0; j < kCols; ++j) sums[j][b] += z * p.x(k, j);
    }
  }
  for (int j = 0; j < kCols; ++j)
    for (Index k = common; k < p.count[j]; ++k)
      for (int b = 0; b < kVectors; ++b)
        sums[j][b] += load_vector(p.z.column(k) + i + b * kWidth) * p.x(k, j);
  for (int j = 0; j < kCols; ++j)
    for (int b = 0; b < kVectors; ++b) store_vector(p.out.column(j) + i + b * kWidth, sums[j][b]);
}

// One row.
template <int kCols>
void combine_row(const Product& p, Index i) {
  double sums[kCols] = {};
  for (int j = 0; j < kCols; ++j)
    for (Index k = 0; k < p.count[j]; ++k) sums[j] += p.z(i, k) * p.x(k, j);
  for (int j = 0; j < kCols; ++j) p.out(i, j) = sums[j];
}

template <int kCols>
void combine_columns(const Product& p, Index rows) {
  constexpr int kVectors = 3;
  Index i = 0;
  for (; i + kVectors * kWidth <= rows; i += kVectors * kWidth) combine_rows<kCols, kVectors>(p, i);
  for (; i + kWidth <= rows; i += kWidth) combine_rows<kCols, 1>(p, i);
  for (; i < rows; ++i) combine_row<kCols>(p, i);
}

void combine(Index rows, ConstRealView z, int cols, ConstRealView x, const Index* count,
             RealView out) {
  const Product p = {z, x, count, out};
  switch (cols) {
    case 4:
      return combine_columns<4>(p, rows);
    case 3:
      return combine_columns<3>(p, rows);
    case 2:
      return combine_columns<2>(p, rows);
    default:
      return combine_columns<1>(p, rows);
  }
}

}  // namespace

const BackTransformationKernels back_transformation_kernels_table = {combine};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
