// The inner loop of the QR decomposition.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/rotation_kernels.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

namespace {

// Whether x is outside the open interval (-tol, tol); so is a NaN.
MATRIX_INLINE bool counts(double x, double tol) {
  return !(-tol < x && x < tol);
}

}  // namespace

// A run of rotations.
struct ClearedRun {
  Index count;
  bool all_numbers;  // Whether no cosine is a NaN.
};

struct QrKernels {
  // Clears elements of a column, from *v up to the one `most` above it, by rotations with the
  // elements above them, as long as they count. Of the column only the last one that was rotated is
  // stored. The same rotations go over the rows of an array in panels of `cols` columns, see
  // pack/numeric/rotation_kernels.hpp: over the elements from...end - 1 of each, `rows` being where
  // the row of *v begins. Elements of the first panel before `from` may be overwritten.
  ClearedRun (*clear)(Index most, double tol, double* v, double* rows, Index cols, Index from,
                      Index end, Rotation* rotations);
};
MATRIX_SELECT_KERNELS(QrKernels, qr_kernels)

}  // namespace matrix_pack
