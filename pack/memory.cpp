#include "pack/memory.hpp"

#include <cstring>

namespace matrix_pack {

namespace {

constexpr std::int64_t kDoubleBytes = sizeof(double);

bool fits_matrix(std::int64_t rows, std::int64_t cols) {
  // Both factors are below 2^32 in magnitude, so the product of a valid pair cannot wrap.
  return rows >= 0 && cols >= 0 && rows <= 0x7FFFFFFF && cols <= 0x7FFFFFFF &&
         rows * cols <= std::numeric_limits<std::uint32_t>::max() / kDoubleBytes;
}

}  // namespace

Doubles new_zeros(std::int64_t count) noexcept {
  Doubles zeros = new_doubles(count);
  if (zeros) std::memset(zeros.get(), 0, static_cast<std::size_t>(count) * sizeof(double));
  return zeros;
}

Doubles new_part(std::int64_t rows, std::int64_t cols) noexcept {
  return fits_matrix(rows, cols) ? new_doubles(rows * cols) : nullptr;
}

Doubles new_zero_part(std::int64_t rows, std::int64_t cols) noexcept {
  return fits_matrix(rows, cols) ? new_zeros(rows * cols) : nullptr;
}

bool provide_part(aMatrix* matrix, double* aMatrix::*part) noexcept {
  if (matrix->*part == nullptr) matrix->*part = new_zero_part(matrix->rows, matrix->cols).release();
  return matrix->*part != nullptr;
}

bool provide_parts(aMatrix* matrix) noexcept {
  return provide_part(matrix, &aMatrix::re) && provide_part(matrix, &aMatrix::im);
}

aMatrix* new_matrix(EfiCallContext* context, int rows, int cols, Doubles re, Doubles im) {
  if (!fits_matrix(rows, cols)) return nullptr;
  const auto bytes = static_cast<unsigned>(std::int64_t{rows} * cols * kDoubleBytes);
  aMatrix* matrix = aMatrix::mk(context->allocator, rows, cols, re.get(), im.get(), bytes);
  if (matrix != nullptr) {
    re.release();
    im.release();
  }
  return matrix;
}

}  // namespace matrix_pack
