// The words of this thread's floating-point environment that a pack must leave alone.
#pragma once

#include <cstdint>
#include <vector>

#include "pack/frame/fp_control.hpp"

#if !MATRIX_HAS_MXCSR
#include <cfenv>
#endif

namespace test {

inline std::vector<std::uint32_t> fp_environment() {
#if MATRIX_HAS_MXCSR
  std::uint16_t x87;
  asm volatile("fnstcw %0" : "=m"(x87));
  return {_mm_getcsr(), x87};
#else
  return {static_cast<std::uint32_t>(std::fetestexcept(FE_ALL_EXCEPT)),
          static_cast<std::uint32_t>(std::fegetround())};
#endif
}

}  // namespace test
