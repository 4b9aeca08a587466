// The scaling of eigenvectors: within a core, and at its end.
#pragma once

#include "pack/numeric/views.hpp"

namespace matrix_pack {

// A vector component that grows beyond kGrown has its whole vector multiplied by kShrink: the
// vectors of defective matrices grow without bound. Both are powers of two: nothing is rounded.
inline constexpr double kGrown = 0x1p+256;
inline constexpr double kShrink = 0x1p-256;

// Divides every column of V, n x n, by its component of largest modulus, which becomes exactly 1;
// of equal ones, the first. A column of zeros stays.
void scale_to_largest(int n, const ComplexView& v);

}  // namespace matrix_pack
