// Balancing a general matrix: permutations that isolate eigenvalues, then a scaling by powers of
// two that makes the norms of corresponding rows and columns alike.
//
// Source: Parlett and Reinsch, "Balancing a matrix for calculation of eigenvalues and eigenvectors"
// (1969).
#pragma once

#include "pack/numeric/views.hpp"

namespace matrix_pack {

// What balancing did. Rows and columns outside low..high hold isolated eigenvalues: below the
// diagonal, their columns to the left and their rows at the bottom are zero.
struct Balance {
  int n;  // The order of the matrix.
  int low;
  int high;
  int scaled_end;  // scale[low..scaled_end-1] are factors; the other entries are the numbers of the
                   // rows that were exchanged, 0-based and as doubles.
  double* scale;   // n entries, the caller's.
};

// Balances A, n x n, in place; A is real when its imaginary part is null.
//   stop_at  when the search for rows isolates row `stop_at`, balancing ends: high stays there and
//            nothing is scaled
//   cost     n^2 per pass, a few passes
//   method   rows without off-diagonal elements in columns 0..high go to the bottom, columns
//            without them in rows low..high to the left. Then, until a pass changes nothing, each
//            row and column with sums r and c of off-diagonal magnitudes is scaled by a power of
//            two that makes c and r alike, where that lowers c + r by 5 %.
Balance balance(int n, const ComplexView& a, int stop_at, double* scale);

// Makes the eigenvectors of the balanced matrix (columns of V, n x n) those of the original one:
// scales the rows, then undoes the exchanges in reverse. V is real when its imaginary part is null.
void undo_balance(const Balance& b, const ComplexView& v);

}  // namespace matrix_pack
