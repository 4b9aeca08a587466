// The floating-point environment: the control words and the status flags.
#pragma once

#include <cfenv>
#include <cstdint>
#include <string>

namespace packcheck {

#if defined(__x86_64__) || defined(__i386__)

struct FpState {
  std::uint32_t mxcsr = 0;  // Control and flags of SSE2; 0 where it does not compute.
  std::uint16_t x87_control = 0;
  std::uint16_t x87_status = 0;

  bool operator==(const FpState&) const = default;
};

#else

struct FpState {
  int rounding = 0;
  int traps = 0;
  int flags = 0;

  bool operator==(const FpState&) const = default;
};

#endif

FpState fp_state();

// What is different, in words that follow "changed".
std::string fp_difference(const FpState& before, const FpState& after);

// Puts the environment back as a program finds it.
inline void reset_fp() {
  std::fesetenv(FE_DFL_ENV);
}

}  // namespace packcheck
