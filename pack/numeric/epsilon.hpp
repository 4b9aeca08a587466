// The precision of a double.
#pragma once

namespace matrix_pack {

// The distance from 1 to the next double.
inline constexpr double kEps = 0x1p-52;

}  // namespace matrix_pack
