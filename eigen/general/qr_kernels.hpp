// The inner loops of the double-shift QR iteration on an upper Hessenberg matrix.
//
// A sweep from row m to row en consists of reflectors k = m..en-1. Reflector k acts on rows k, k+1,
// k+2 from the left and on the columns of these numbers from the right; the last one, k = en-1, on
// two of each.
#pragma once

#include <cstddef>

#include "pack/numeric/kernel_sets.hpp"

namespace matrix_pack {

// I - (x y z)^T (1 q r). x = 0: there was nothing to do, and this reflector is left out.
struct Reflector {
  double x, y, z, q, r;
};

// Reflectors first..last-1 of a sweep that ends at row en; reflectors[0] is that of k = first.
struct ReflectorRun {
  std::ptrdiff_t first;
  std::ptrdiff_t last;
  std::ptrdiff_t en;
  const Reflector* reflectors;
};

// A stretch first..last-1 of a sweep, which is to be found and applied near the diagonal.
struct Chase {
  std::ptrdiff_t first;
  std::ptrdiff_t last;
  std::ptrdiff_t m;  // Where the sweep starts, with the vector `start`.
  std::ptrdiff_t l;  // Where the active block begins.
  std::ptrdiff_t en;
  std::ptrdiff_t top;    // The first row that the columns are changed in.
  std::ptrdiff_t right;  // The last column that the rows are changed in.
  double start[3];
};

struct HessenbergKernels {
  // Finds the reflectors of the stretch and applies each at once, to rows k.. of columns k..right
  // and to columns k.. of rows top..min(en, k+3).
  void (*chase)(const Chase& c, double* h, std::ptrdiff_t ld, Reflector* reflectors);
  // Applies reflectors to the rows of columns begin..end-1.
  void (*reflect_rows)(const ReflectorRun& run, double* h, std::ptrdiff_t ld, std::ptrdiff_t begin,
                       std::ptrdiff_t end);
  // Applies `count` runs of reflectors, one after the other, to the columns of rows begin..end-1.
  void (*reflect_columns)(int count, const ReflectorRun* runs, double* h, std::ptrdiff_t ld,
                          std::ptrdiff_t begin, std::ptrdiff_t end);
};
MATRIX_SELECT_KERNELS(HessenbergKernels, hessenberg_kernels)

}  // namespace matrix_pack
