// The register that governs double arithmetic on this processor.
//
// Where SSE2 computes, it is MXCSR: one load and one store of a few nanoseconds, and the processor
// can trap. Elsewhere the C library's fenv.h serves, and faults are read from the status flags.
#pragma once

#include <cstdint>

#if defined(__SSE2_MATH__)
// Whether that is MXCSR.
#define MATRIX_HAS_MXCSR 1
#include <xmmintrin.h>
#else
#define MATRIX_HAS_MXCSR 0
#include <cfenv>
#endif

#if defined(_WIN32)
// Declares _clearfp, whose flags are numbered as the C library has them.
#include <cfloat>
#else
// Returns the pending floating-point status flags and clears them. Kept under this name: it is the
// one by which the fault classes obtain their status word.
inline std::uint32_t _clearfp() {
#if MATRIX_HAS_MXCSR
  constexpr std::uint32_t kFlags = 0x3F;
  const std::uint32_t control = _mm_getcsr();
  _mm_setcsr(control & ~kFlags);
  return control & kFlags;
#else
  const auto flags = static_cast<std::uint32_t>(std::fetestexcept(FE_ALL_EXCEPT));
  std::feclearexcept(FE_ALL_EXCEPT);
  return flags;
#endif
}
#endif

namespace matrix_pack {

#if MATRIX_HAS_MXCSR

// MXCSR for a guarded stretch: round to nearest, denormals honoured, no flags; invalid operation,
// division by zero and overflow trap where faults do, the other exceptions stay masked.
inline constexpr std::uint32_t kAllMasked = 0x1F80;
inline constexpr std::uint32_t kTrapping = kAllMasked & ~0x0680u;
inline constexpr std::uint32_t kInvalidFlag = 0x01;
inline constexpr std::uint32_t kDivideByZeroFlag = 0x04;
inline constexpr std::uint32_t kOverflowFlag = 0x08;

#endif

}  // namespace matrix_pack
