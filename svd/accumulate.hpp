// The orthogonal factors of a bidiagonalization, formed from the vectors it leaves.
#pragma once

#include "svd/bidiagonal.hpp"

namespace matrix_pack {

// V (n x n) becomes the product of the row reflections, whose vectors stand in the n x n array
// `vectors`, that of step i in column i from row i + 1 on.
//   cost     4 n^3 / 3 flops
void accumulate_right(const Bidiagonal& b, ConstRealView vectors, RealView v);

// The first n columns of the product of the column reflections take the place of their vectors in
// b.a. b.w is the diagonal that bidiagonalise left.
//   cost     2 (m n^2 - n^3 / 3) flops
void accumulate_left(const Bidiagonal& b);

}  // namespace matrix_pack
