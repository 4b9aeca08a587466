// The size up to which numbers may be rotated, reflected and squared without a thought to overflow.
#pragma once

namespace matrix_pack {

// Of numbers up to this one, neither the sums of squares nor what orthogonal transformations make
// of them overflow: such operations then fault in no order.
inline constexpr double kModerate = 1e150;

}  // namespace matrix_pack
