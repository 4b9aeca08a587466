// The reduction to upper bidiagonal form with which both singular value cores begin.
#pragma once

#include "pack/numeric/views.hpp"

namespace matrix_pack {

// A column-major m x n array (m >= n) that is being decomposed, and its bidiagonal form: w[i] on
// the diagonal, rv1[i] above w[i]; rv1[0] = 0.
struct Bidiagonal {
  Index m;
  Index n;
  double* a;
  Index ld;
  double* w;
  double* rv1;
};

// Where the row vectors go: that of step i to rows[i * step + k] for the columns k > i. With a step
// of 0 each displaces the one before it.
struct RowVectors {
  double* rows;
  Index step;
};

// Doubles of work that bidiagonalise needs.
Index bidiagonalise_work(Index m, Index n);

// Reduces b.a by Householder reflections, of columns and of rows alternately.
//   b        on return w and rv1, and from row i of column i on the vector of column step i; what
//            stands above is of no use. The vectors have the scale of their columns and rows
//   work     bidiagonalise_work(m, n) doubles
//   returns  the largest |w[i]| + |rv1[i]|
//   cost     4 (m n^2 - n^3 / 3) flops; two passes over memory a step, one of them writing
//   method   Golub and Reinsch, Handbook for Automatic Computation II (1971), contribution I/10,
//            each column and row divided by the sum of its magnitudes
double bidiagonalise(const Bidiagonal& b, const RowVectors& row_vectors, double* work);

}  // namespace matrix_pack
