// The inner loop of the way back of eigenvectors.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// Columns of a product that share the loads of Z.
inline constexpr int kColumnsTogether = 4;

struct BackTransformationKernels {
  // Columns j = 0..cols-1 (at most kColumnsTogether) of `out` become the sums of Z(:,k) X(k,j) over
  // k = 0..count[j]-1 in ascending order, from zero. `out` may lie in Z: all columns of a row are
  // read before any is written.
  void (*combine)(Index rows, ConstRealView z, int cols, ConstRealView x, const Index* count,
                  RealView out);
};
MATRIX_SELECT_KERNELS(BackTransformationKernels, back_transformation_kernels)

}  // namespace matrix_pack
