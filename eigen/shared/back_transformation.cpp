#include "eigen/shared/back_transformation.hpp"

#include <algorithm>

#include "eigen/shared/back_transformation_kernels.hpp"
#include "pack/memory.hpp"

namespace matrix_pack {

namespace {

// Columns that share the loads of Z.
constexpr int kMostColumns = 4;

// Columns first..first+cols-1 of the product, rows low..igh.
struct Block {
  int first;
  int cols;
  std::ptrdiff_t count[kMostColumns];  // Terms in the sums of each column.
};

// The block of columns that ends before `end`. The two columns of a pair stay together: their sums
// reach into the second one, which must not have been overwritten.
Block block_before(int end, const Balance& b, const std::ptrdiff_t* last) {
  Block block = {std::max(end - kMostColumns, 0), 0, {}};
  if (block.first > 0 && last[block.first - 1] == block.first) ++block.first;
  block.cols = end - block.first;
  for (int j = 0; j < block.cols; ++j) {
    const std::ptrdiff_t end_of_sum = std::min<std::ptrdiff_t>(last[block.first + j], b.igh) + 1;
    block.count[j] = std::max<std::ptrdiff_t>(end_of_sum - b.low, 0);
  }
  return block;
}

void combine(const Block& block, const Balance& b, const double* x, std::ptrdiff_t ldx,
             const double* z, std::ptrdiff_t ldz, double* out) {
  triangular_kernels().combine(b.igh + 1 - b.low, z + b.low * ldz + b.low, ldz, block.cols,
                               x + block.first * ldx + b.low, ldx, block.count, out);
}

// The products of the parts, and their sum and difference.
void combine_complex(const Block& block, const Balance& b, const Parts& x, const Parts& z,
                     double* work) {
  const std::ptrdiff_t size = kMostColumns * z.ld;
  double* const rr = work;
  double* const ii = work + size;
  double* const ri = work + 2 * size;
  double* const ir = work + 3 * size;
  combine(block, b, x.re, x.ld, z.re, z.ld, rr);
  combine(block, b, x.im, x.ld, z.im, z.ld, ii);
  combine(block, b, x.im, x.ld, z.re, z.ld, ri);
  combine(block, b, x.re, x.ld, z.im, z.ld, ir);
  for (int j = 0; j < block.cols; ++j) {
    const std::ptrdiff_t column = (block.first + j) * z.ld + b.low;
    for (std::ptrdiff_t i = 0; i <= b.igh - b.low; ++i) {
      z.re[column + i] = rr[j * z.ld + i] - ii[j * z.ld + i];
      z.im[column + i] = ri[j * z.ld + i] + ir[j * z.ld + i];
    }
  }
}

// The rows of the isolated eigenvalues.
void copy_outer_rows(const Balance& b, const double* x, std::ptrdiff_t ldx,
                     const std::ptrdiff_t* last, int n, double* z, std::ptrdiff_t ldz) {
  for (int j = 0; j < n; ++j) {
    const auto component = [&](int i) { return i <= last[j] ? x[j * ldx + i] : 0.0; };
    for (int i = 0; i < b.low; ++i) z[j * ldz + i] = component(i);
    for (int i = b.igh + 1; i < n; ++i) z[j * ldz + i] = component(i);
  }
}

}  // namespace

bool transform_vectors(const Balance& b, const Parts& x, const std::ptrdiff_t* last,
                       const Parts& z) {
  Doubles work;
  if (x.im != nullptr && !(work = new_doubles(4 * kMostColumns * z.ld))) return false;
  for (int end = z.n; end > 0;) {
    const Block block = block_before(end, b, last);
    if (x.im != nullptr)
      combine_complex(block, b, x, z, work.get());
    else
      combine(block, b, x.re, x.ld, z.re, z.ld, z.re + block.first * z.ld + b.low);
    end = block.first;
  }
  copy_outer_rows(b, x.re, x.ld, last, z.n, z.re, z.ld);
  if (x.im != nullptr) copy_outer_rows(b, x.im, x.ld, last, z.n, z.im, z.ld);
  return true;
}

}  // namespace matrix_pack
