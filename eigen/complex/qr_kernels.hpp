// The inner loops of the single-shift QR iteration on a complex upper Hessenberg matrix with a real
// subdiagonal.
//
// A sweep of a block of the rows first..last makes it its triangular factor R, by the rotations
// i = first+1..last of rows i-1 and i, and then multiplies R by their conjugate transposes, as
// rotations of columns i-1 and i.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// Rows (y, z) become (conj(x) y + s z, x z - s y); columns (y, z) become (x y + s z, conj(x) z - s
// y).
struct ComplexRotation {
  Complex x;
  double s;
};

// Rotations first..last of a sweep; rotations[0] is that of i = first. At the end column `last` is
// multiplied by the phase, a number of modulus 1; it stays where the imaginary part is 0.
struct ComplexRotationRun {
  Index first;
  Index last;
  const ComplexRotation* rotations;
  Complex phase;
};

struct ComplexQrKernels {
  // Finds rotations first..last, each from the column before it, and applies it to the columns
  // i..right. Column i-1 takes R's diagonal element and a zero.
  void (*triangularize)(Index first, Index last, Index right, const ComplexView& h,
                        ComplexRotation* rotations);
  // Applies rotations to the rows of columns begin..end-1.
  void (*rotate_rows)(const ComplexRotationRun& run, const ComplexView& h, Index begin, Index end);
  // Applies rotations to the columns of rows begin..end-1, of R: row i takes part from rotation i
  // on.
  void (*rotate_columns)(const ComplexRotationRun& run, const ComplexView& h, Index begin,
                         Index end);
  // Applies `count` runs, one after the other, to the columns of rows begin..end-1 of Z.
  void (*rotate_all_columns)(int count, const ComplexRotationRun* runs, const ComplexView& z,
                             Index begin, Index end);
  // Applies runs to the rows of some columns of H, as rotate_rows does, and multiplies row `last`
  // by the conjugate phase at the end of each. The columns stand transposed: column i of `panel` is
  // their row i. `cols` is a multiple of 32.
  void (*rotate_transposed)(int count, const ComplexRotationRun* runs, const ComplexView& panel,
                            Index cols);
};
MATRIX_SELECT_KERNELS(ComplexQrKernels, complex_qr_kernels)

}  // namespace matrix_pack
