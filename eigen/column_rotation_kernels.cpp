#include "eigen/column_rotation_kernels.hpp"

#include "pack/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Rows that go through a sweep together: enough vectors to keep the arithmetic busy, few enough to
// stay in registers.
constexpr int kVectors = 4;
constexpr int kBlock = kVectors * kWidth;

// One sweep over kBlock rows. The column that two rotations share stays in registers.
void rotate_block(const RotationSweep& sweep, double* z, std::ptrdiff_t ld) {
  double* column = z + (sweep.last + 1) * ld;
  Vector y[kVectors];
  for (int b = 0; b < kVectors; ++b) y[b] = load_vector(column + b * kWidth);
  for (std::ptrdiff_t i = sweep.last; i >= sweep.first; --i, column -= ld) {
    const double c = sweep.pairs[2 * (i - sweep.first)];
    const double s = sweep.pairs[2 * (i - sweep.first) + 1];
    for (int b = 0; b < kVectors; ++b) {
      const Vector x = load_vector(column - ld + b * kWidth);
      store_vector(column + b * kWidth, x * s + y[b] * c);
      y[b] = x * c - y[b] * s;
    }
  }
  for (int b = 0; b < kVectors; ++b) store_vector(column + b * kWidth, y[b]);
}

// The same for a few rows, one by one.
void rotate_rows(const RotationSweep& sweep, std::ptrdiff_t rows, double* z, std::ptrdiff_t ld) {
  for (std::ptrdiff_t i = sweep.last; i >= sweep.first; --i) {
    const double c = sweep.pairs[2 * (i - sweep.first)];
    const double s = sweep.pairs[2 * (i - sweep.first) + 1];
    double* const x = z + i * ld;
    double* const y = x + ld;
    for (std::ptrdiff_t k = 0; k < rows; ++k) {
      const double xk = x[k];
      const double yk = y[k];
      y[k] = s * xk + c * yk;
      x[k] = c * xk - s * yk;
    }
  }
}

void rotate(int count, const RotationSweep* sweeps, std::ptrdiff_t rows, double* z,
            std::ptrdiff_t ld) {
  std::ptrdiff_t k = 0;
  for (; k + kBlock <= rows; k += kBlock)
    for (int i = 0; i < count; ++i) rotate_block(sweeps[i], z + k, ld);
  for (int i = 0; k < rows && i < count; ++i) rotate_rows(sweeps[i], rows - k, z + k, ld);
}

}  // namespace

const ColumnRotationKernels column_rotation_kernels_table = {rotate};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
