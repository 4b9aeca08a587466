// The inner loops of the double-shift QR iteration on an upper Hessenberg matrix.
//
// A sweep of the rows m..end consists of the reflectors k = m..end-1. Reflector k acts on rows k,
// k+1, k+2 from the left and on the columns of these numbers from the right; the last one,
// k = end-1, on two of each.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// I - (x y z)^T (1 q r). x = 0: there was nothing to do, and this reflector is left out.
struct Reflector {
  double x, y, z, q, r;
};

// Reflectors first..last-1 of a sweep that ends with row `end`; reflectors[0] is that of k = first.
struct ReflectorRun {
  Index first;
  Index last;
  Index end;
  const Reflector* reflectors;
};

// A stretch first..last-1 of a sweep, which is to be found and applied near the diagonal.
struct Chase {
  Index first;
  Index last;
  Index m;      // Where the sweep starts, with the vector `start`.
  Index block;  // The first row of the active block.
  Index end;
  Index top;    // The first row that the columns are changed in.
  Index right;  // The last column that the rows are changed in.
  double start[3];
};

struct HessenbergKernels {
  // Finds the reflectors of the stretch and applies each at once, to rows k.. of columns k..right
  // and to columns k.. of rows top..min(end, k+3).
  void (*chase)(const Chase& c, RealView h, Reflector* reflectors);
  // Applies reflectors to the rows of columns begin..end-1.
  void (*reflect_rows)(const ReflectorRun& run, RealView h, Index begin, Index end);
  // Applies `count` runs of reflectors, one after the other, to the columns of rows begin..end-1.
  void (*reflect_columns)(int count, const ReflectorRun* runs, RealView h, Index begin, Index end);
  // Applies runs to the rows of some columns of H, as reflect_rows does. They stand transposed:
  // column i of `panel` is their row i. `cols` is a multiple of 32.
  void (*reflect_transposed)(int count, const ReflectorRun* runs, RealView panel, Index cols);
};
MATRIX_SELECT_KERNELS(HessenbergKernels, hessenberg_kernels)

}  // namespace matrix_pack
