// The reflectors of the QZ method, made from the numbers that they act on.
#pragma once

#include <cmath>

#include "eigen/qz/reflector_kernels.hpp"

namespace matrix_pack {

// Numbers whose magnitudes add up to something between these need no scaling: their squares neither
// overflow nor lose their sum to underflow.
inline constexpr double kSafeLow = 0x1p-400;
inline constexpr double kSafeHigh = 0x1p400;

// The reflector that takes (x1, x2) to (-+|x|, 0); the identity when both are zero.
inline Reflector2 reflector(double x1, double x2) {
  const double s = std::fabs(x1) + std::fabs(x2);
  if (!(s > kSafeLow && s < kSafeHigh)) {
    if (s == 0.0) return {};
    x1 /= s;
    x2 /= s;
  }
  const double r = std::copysign(std::sqrt(x1 * x1 + x2 * x2), x1);
  return {-(x1 + r) / r, -x2 / r, x2 / (x1 + r)};
}

// The same for (x1, x2, x3).
inline Reflector3 reflector(double x1, double x2, double x3) {
  const double s = std::fabs(x1) + std::fabs(x2) + std::fabs(x3);
  if (!(s > kSafeLow && s < kSafeHigh)) {
    if (s == 0.0) return {};
    x1 /= s;
    x2 /= s;
    x3 /= s;
  }
  const double r = std::copysign(std::sqrt(x1 * x1 + x2 * x2 + x3 * x3), x1);
  return {-(x1 + r) / r, -x2 / r, -x3 / r, x2 / (x1 + r), x3 / (x1 + r)};
}

inline bool is_identity(const Reflector2& h) {
  return h.v1 == 0.0;
}
inline bool is_identity(const Reflector3& h) {
  return h.v1 == 0.0;
}

}  // namespace matrix_pack
