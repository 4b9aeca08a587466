#include "eigen/shared/back_transformation.hpp"

#include <algorithm>

#include "eigen/shared/back_transformation_kernels.hpp"
#include "pack/memory.hpp"

namespace matrix_pack {

namespace {

// Columns that share the loads of Z.
constexpr int kMostColumns = 4;

// Columns first..first+cols-1 of the product, rows low..high.
struct Block {
  int first;
  int cols;
  Index count[kMostColumns];  // Terms in the sums of each column.
};

// The block of columns that ends before `end`. The two columns of a pair stay together: their sums
// reach into the second one, which must not have been overwritten.
Block block_before(int end, const Balance& b, const Index* last) {
  Block block = {std::max(end - kMostColumns, 0), 0, {}};
  if (block.first > 0 && last[block.first - 1] == block.first) ++block.first;
  block.cols = end - block.first;
  for (int j = 0; j < block.cols; ++j) {
    const Index end_of_sum = std::min<Index>(last[block.first + j], b.high) + 1;
    block.count[j] = std::max<Index>(end_of_sum - b.low, 0);
  }
  return block;
}

// The block of one part of Z times one part of X.
void combine(const Block& block, const Balance& b, ConstRealView x, ConstRealView z, double* out) {
  back_transformation_kernels().combine(b.high + 1 - b.low, z.from(b.low, b.low), block.cols,
                                        x.from(b.low, block.first), block.count, out);
}

// The products of the parts, and their sum and difference.
void combine_complex(const Block& block, const Balance& b, const ConstComplexView& x,
                     const ComplexView& z, double* work) {
  const ConstRealView x_re = {x.re, x.ld};
  const ConstRealView x_im = {x.im, x.ld};
  const Index size = kMostColumns * z.ld;
  double* const rr = work;
  double* const ii = work + size;
  double* const ri = work + 2 * size;
  double* const ir = work + 3 * size;
  combine(block, b, x_re, {z.re, z.ld}, rr);
  combine(block, b, x_im, {z.im, z.ld}, ii);
  combine(block, b, x_im, {z.re, z.ld}, ri);
  combine(block, b, x_re, {z.im, z.ld}, ir);
  for (int j = 0; j < block.cols; ++j)
    for (Index i = 0; i <= b.high - b.low; ++i) {
      const Index k = j * z.ld + i;
      z.set(b.low + i, block.first + j, {rr[k] - ii[k], ri[k] + ir[k]});
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
  Doubles work;
  if (x.im != nullptr && !(work = new_doubles(4 * kMostColumns * z.ld))) return false;
  for (int end = b.n; end > 0;) {
    const Block block = block_before(end, b, last);
    if (x.im != nullptr)
      combine_complex(block, b, x, z, work.get());
    else
      combine(block, b, {x.re, x.ld}, {z.re, z.ld}, z.re + block.first * z.ld + b.low);
    end = block.first;
  }
  copy_outer_rows(b, {x.re, x.ld}, last, {z.re, z.ld});
  if (x.im != nullptr) copy_outer_rows(b, {x.im, x.ld}, last, {z.im, z.ld});
  return true;
}

}  // namespace matrix_pack
