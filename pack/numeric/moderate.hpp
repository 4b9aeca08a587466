// Numbers that may be rotated, reflected and squared without a thought to overflow. For cores and
// kernels alike.
#pragma once

#include "pack/numeric/views.hpp"

namespace matrix_pack {

// Of numbers up to this one, neither the sums of squares nor what orthogonal transformations make
// of them overflow: such operations then fault in no order.
inline constexpr double kModerate = 1e150;

namespace {

// Whether all elements of a rows x cols array are moderate. By their bits, without the sign:
// nothing faults. The sign of a difference says that an element is larger.
MATRIX_INLINE bool are_moderate(Index rows, Index cols, ConstRealView a) {
  constexpr long long kMost = __builtin_bit_cast(long long, kModerate);
  long long differences = 0;
  for (Index j = 0; j < cols; ++j)
    for (Index i = 0; i < rows; ++i)
      differences |= kMost - __builtin_bit_cast(long long, __builtin_fabs(a(i, j)));
  return differences >= 0;
}

}  // namespace

}  // namespace matrix_pack
