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

// Columns that are cleared abreast, and the rows of room that this takes beside theirs.
inline constexpr Index kAbreast = 8;
inline constexpr Index kRowsBefore = 2 * kAbreast;
inline constexpr Index kRowsBehind = kAbreast;

// What has become of columns that were cleared abreast. All zero where nothing was done: an element
// is too large, or no number.
struct ClearedAbreast {
  double squares[kAbreast];   // The sum of the squares of each column, in no documented order.
  double smallest[kAbreast];  // The smallest magnitude that a rotation of the column has cleared.
};

struct QrKernels {
  // Clears elements of a column, from *v up to the one `most` above it, by rotations with the
  // elements above them, as long as they count. Of the column only the last one that was rotated is
  // stored. The same rotations go over the rows of an array in panels of `cols` columns, see
  // pack/numeric/rotation_kernels.hpp: over the elements from...end - 1 of each, `rows` being where
  // the row of *v begins. Elements of the first panel before `from` may be overwritten.
  ClearedRun (*clear)(Index most, double tol, double* v, double* rows, Index cols, Index from,
                      Index end, Rotation* rotations);

  // Clears kAbreast columns at once, in the lower `rows` of the `cols` rows of a panel, whose last
  // one begins at `last`; the pivot row of each column is one below that of the column before. All
  // elements are taken to count. The panel stays; the rows, from the last one up and kAbreast
  // elements each, and their rotations are left in x and rotations[j]: rows - 1 - j of column j.
  // Around the rows x has kRowsBefore and kRowsBehind more, which hold moderate numbers.
  ClearedAbreast (*clear_abreast)(Index rows, Index cols, const double* last, double* x,
                                  Rotation* const* rotations);
};
MATRIX_SELECT_KERNELS(QrKernels, qr_kernels)

}  // namespace matrix_pack
