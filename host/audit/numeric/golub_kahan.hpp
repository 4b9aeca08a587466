// The largest singular value of a linear map, by products with vectors alone.
#pragma once

#include <functional>

#include "host/audit/numeric/matrix.hpp"

namespace audit {

// Few leave more open than many, in a third of the time.
inline constexpr int kManySteps = 40, kFewSteps = 20;

using Map = std::function<Vector(const Vector&)>;

struct LargestValue {
  double value;  // At most the singular value, but for rounding,
  double open;   // and by no more than about this below.
  Vector right;  // Its right singular vector.
};

// Steps of bidiagonalization with a random start, each vector made orthogonal to all before (G. H.
// Golub, W. Kahan, Calculating the singular values and pseudo-inverse of a matrix, 1965), for a map
// of vectors of length n and its transpose. Each step takes a
// product with each.
LargestValue largest_singular_value(const Map& map, const Map& transpose, int n, Random random,
                                    efi::StopFlag stop, int most_steps = kManySteps);

// The same for a matrix, whose elements are below about 2.
LargestValue largest_singular_value(const Parts& A, Random random, efi::StopFlag stop,
                                    int most_steps = kManySteps);

}  // namespace audit
