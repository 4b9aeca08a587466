#include "eigen/shared/back_transformation_kernels.hpp"

#include "pack/numeric/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

struct Product {
  const double* z;
  std::ptrdiff_t ldz;
  const double* x;
  std::ptrdiff_t ldx;
  const std::ptrdiff_t* count;
  double* out;
};

// kCols columns of kVectors * kWidth rows from row i on. The sums stay in registers.
template <int kCols, int kVectors>
MATRIX_LANES_INLINE void combine_rows(const Product& p, std::ptrdiff_t i) {
  std::ptrdiff_t common = p.count[0];
  for (int j = 1; j < kCols; ++j) common = p.count[j] < common ? p.count[j] : common;
  Vector sums[kCols][kVectors] = {};
  for (std::ptrdiff_t k = 0; k < common; ++k) {
    for (int b = 0; b < kVectors; ++b) {
      const Vector z = load_vector(p.z + k * p.ldz + i + b * kWidth);
      for (int j = 0; j < kCols; ++j) sums[j][b] += z * p.x[j * p.ldx + k];
    }
  }
  for (int j = 0; j < kCols; ++j)
    for (std::ptrdiff_t k = common; k < p.count[j]; ++k)
      for (int b = 0; b < kVectors; ++b)
        sums[j][b] += load_vector(p.z + k * p.ldz + i + b * kWidth) * p.x[j * p.ldx + k];
  for (int j = 0; j < kCols; ++j)
    for (int b = 0; b < kVectors; ++b) store_vector(p.out + j * p.ldz + i + b * kWidth, sums[j][b]);
}

// One row.
template <int kCols>
void combine_row(const Product& p, std::ptrdiff_t i) {
  double sums[kCols] = {};
  for (int j = 0; j < kCols; ++j)
    for (std::ptrdiff_t k = 0; k < p.count[j]; ++k)
      sums[j] += p.z[k * p.ldz + i] * p.x[j * p.ldx + k];
  for (int j = 0; j < kCols; ++j) p.out[j * p.ldz + i] = sums[j];
}

template <int kCols>
void combine_columns(const Product& p, std::ptrdiff_t rows) {
  constexpr int kVectors = 3;
  std::ptrdiff_t i = 0;
  for (; i + kVectors * kWidth <= rows; i += kVectors * kWidth) combine_rows<kCols, kVectors>(p, i);
  for (; i + kWidth <= rows; i += kWidth) combine_rows<kCols, 1>(p, i);
  for (; i < rows; ++i) combine_row<kCols>(p, i);
}

void combine(std::ptrdiff_t rows, const double* z, std::ptrdiff_t ldz, int cols, const double* x,
             std::ptrdiff_t ldx, const std::ptrdiff_t* count, double* out) {
  const Product p = {z, ldz, x, ldx, count, out};
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

const TriangularKernels triangular_kernels_table = {combine};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
