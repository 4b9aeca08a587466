// The relative singularity test of the LU factorizations: a pivot that is tiny beside what the
// elimination has grown to counts as zero.
#pragma once

#include "pack/numeric/always_inline.hpp"

namespace matrix_pack {

// Before step k is carried out, its pivot and all before it are compared with epsilon times the
// growth: the largest |u(i,j)| times the growth bound of column i over the rows i < k of U.
struct PivotTest {
  double epsilon;
  bool on;
  double growth;
  double smallest;  // Of the pivots met so far.
};

// Takes in the bound of the next row of U. NaN bounds leave the growth as it is.
MATRIX_INLINE void take_row(PivotTest& test, double bound) {
  if (bound > test.growth) test.growth = bound;
}

// Whether the next pivot, of the given magnitude, and those before it pass.
MATRIX_INLINE bool passes(PivotTest& test, double pivot) {
  if (pivot < test.smallest) test.smallest = pivot;
  return !(test.on && test.smallest < test.growth * test.epsilon);
}

}  // namespace matrix_pack
