#include "eigen/shared/back_transformation.hpp"

#include <algorithm>

#include "eigen/shared/back_transformation_kernels.hpp"
#include "pack/memory.hpp"

namespace matrix_pack {

namespace {

// Rows of Z that are combined together. They are copied side by side, so that all columns of the
// product find them in cache.
constexpr Index kRowsTogether = 24;

// The copies of so many columns stand on the stack.
constexpr Index kFew = 12;

// Columns first..first+cols-1 of the product.
struct Block {
  int first;
  int cols;
  Index count[kColumnsTogether];  // Terms in the sums of each column.
};

Block block_from(int first, const Balance& b, const Index* last) {
  Block block = {first, std::min(kColumnsTogether, b.n - first), {}};
  for (int j = 0; j < block.cols; ++j) {
    const Index end_of_sum = std::min<Index>(last[first + j], b.high) + 1;
    block.count[j] = std::max<Index>(end_of_sum - b.low, 0);
  }
  return block;
}

// Rows row...row+rows-1 of one part of Z, side by side from column `low` on.
void copy_rows(const Balance& b, Index row, Index rows, ConstRealView z, double* copy) {
  for (Index k = b.low; k <= b.high; ++k, copy += kRowsTogether)
    std::copy_n(z.column(k) + row, rows, copy);
}

// A block of those rows of the product: of one part of Z with one part of X.
void combine(const Block& block, const Balance& b, Index rows, const double* z, ConstRealView x,
             RealView out) {
  back_transformation_kernels().combine(rows, {z, kRowsTogether}, block.cols,
                                        x.from(b.low, block.first), block.count, out);
}

// The products of the parts, and their sum and difference.
void combine_complex(const Block& block, const Balance& b, Index rows, const double* z_re,
                     const double* z_im, const ConstComplexView& x, const ComplexView& out) {
  constexpr Index kSize = kRowsTogether * kColumnsTogether;
  double rr[kSize];
  double ii[kSize];
  double ri[kSize];
  double ir[kSize];
  combine(block, b, rows, z_re, {x.re, x.ld}, {rr, kRowsTogether});
  combine(block, b, rows, z_im, {x.im, x.ld}, {ii, kRowsTogether});
  combine(block, b, rows, z_re, {x.im, x.ld}, {ri, kRowsTogether});
  combine(block, b, rows, z_im, {x.re, x.ld}, {ir, kRowsTogether});
  for (Index j = 0; j < block.cols; ++j)
    for (Index i = 0; i < rows; ++i) {
      const Index k = j * kRowsTogether + i;
      out.set(i, j, {rr[k] - ii[k], ri[k] + ir[k]});
    }
}

// The rows of the isolated eigenvalues.
void copy_outer_rows(const Balance& b, ConstRealView x, const Index* last, RealView z) {
  for (int j = 0; j < b.n; ++j) {
    const auto component = [&](int i) { return i <= last[j] ? x(i, j) : 0.0; };
    for (int i = 0; i < b.low; ++i) z(i, j) = component(i);
    for (int i = b.high + 1; i < b.n; ++i) z(i, j) = component(i);
  }
}

}  // namespace

bool transform_vectors(const Balance& b, const ConstComplexView& x, const Index* last,
                       const ComplexView& z) {
  const bool is_complex = x.im != nullptr;
  const Index size = kRowsTogether * (b.high + 1 - b.low);
  const Work<double, kRowsTogether * kFew> copies(is_complex ? 2 * size : size);
  if (!copies) return false;
  double* const re = copies.get();
  double* const im = re + size;
  for (Index row = b.low; row <= b.high; row += kRowsTogether) {
    const Index rows = std::min<Index>(kRowsTogether, b.high + 1 - row);
    copy_rows(b, row, rows, {z.re, z.ld}, re);
    if (is_complex) copy_rows(b, row, rows, {z.im, z.ld}, im);
    for (int first = 0; first < b.n; first += kColumnsTogether) {
      const Block block = block_from(first, b, last);
      if (is_complex)
        combine_complex(block, b, rows, re, im, x, z.from(row, first));
      else
        combine(block, b, rows, re, {x.re, x.ld}, RealView{z.re, z.ld}.from(row, first));
    }
  }
  copy_outer_rows(b, {x.re, x.ld}, last, {z.re, z.ld});
  if (x.im != nullptr) copy_outer_rows(b, {x.im, x.ld}, last, {z.im, z.ld});
  return true;
}

}  // namespace matrix_pack
