// The elements of matrices: numbers from one source, in one structure. They are made from integers
// and powers of two alone, so that they are the same doubles on every machine.
#pragma once

#include <functional>

#include "host/arguments/random.hpp"

namespace arguments {

// Where numbers come from.
enum class Source {
  units,     // Random, in [-1, 1).
  integers,  // Random, -4 to 4.
  zeros,
  negative_zeros,
  repeated,  // All 2.5.
  huge,      // Units times 2^1022,
  large,     // times 2^700,
  big,       // times 2^233,
  small,     // times 2^-233,
  tiny,      // times 2^-1000,
  denormal,  // times 2^-1060.
  edge104,   // Around 1e104, of either sign.
  edge307,   // Around 1e307.
  nans,
  infinities,  // Of either sign.
  mixed,       // Of everything.
};
inline constexpr int kSources = 16;

// Which elements they become, and what the others are. A complex matrix has the structure in both
// parts, or as a whole where that is said.
enum class Structure {
  general,
  plain,              // Small fixed integers: see plain_element in matrices.cpp.
  zero_imaginary,     // The imaginary part is 0.
  symmetric,          // Complex: Hermitian.
  skew,               // Complex: skew-Hermitian.
  dominant,           // Symmetric or Hermitian, with a diagonal that makes it positive definite.
  definite,           // A matrix of integers -3 to 3 times its conjugate transpose; no source.
  deficient,          // A product of two such matrices, of half the rank; no source.
  triangular,         // Upper, with 1, 2, 3... on the diagonal.
  hidden_triangular,  // The same, with rows and columns permuted alike.
  block_triangular,   // Upper triangular in the first quarter of the columns and the last of the
                      // rows.
  lower,              // Lower triangular.
  tridiagonal,
  bidiagonal,       // Upper.
  bidiagonal_gaps,  // And every fourth element of the diagonal is 0.
  blocks,           // Of order 3 on the diagonal.
  companion,        // Of its first row.
  graded,           // Times 2^-(i + j).
  steep,            // Times powers of two from 2^200 to 2^-199.
  badly_scaled,     // Times powers of two from 2^40 to 2^-40: similar to a general one.
  zero_row,         // In the middle.
  zero_column,
  identity,     // And the others have no source.
  jordan,       // An eigenvalue with a single vector for every four rows; complex: one, 2i.
  cyclic,       // Nilpotent but for one tiny element: eigenvalues on a circle.
  clustered,    // All eigenvalues but one are 1.
  permutation,  // Of the columns.
  circulant,
  hilbert,
  clement,    // Integer eigenvalues, ill-conditioned.
  frank,      // The same.
  grcar,      // Sensitive complex eigenvalues.
  rotations,  // Of order 2 on the diagonal.
};
inline constexpr int kStructures = 33;

// A matrix in the making. Parts are column-major; a null one stays absent.
struct Draft {
  int rows;
  int cols;
  double* re;
  double* im;
  Source source;
  Random random;
  const std::function<double()>* given = nullptr;  // If not null: where numbers come from instead.

  // The next number.
  double next();
};

// Its name in reports; empty for general.
const char* name_of(Structure structure);
const char* name_of(Source source);

// Writes all elements. Only the structures definite and deficient need memory.
void fill(Draft& draft, Structure structure);

}  // namespace arguments
