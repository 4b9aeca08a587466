#include "host/packcheck/watch/fp_state.hpp"

#include <fmt/format.h>

namespace packcheck {

#if defined(__x86_64__) || defined(__i386__)

FpState fp_state() {
  FpState state;
#if defined(__SSE2__)
  asm volatile("stmxcsr %0" : "=m"(state.mxcsr));
#endif
  asm volatile("fnstcw %0" : "=m"(state.x87_control));
  asm volatile("fnstsw %0" : "=m"(state.x87_status));
#if defined(__i386__)
  // There functions return doubles in registers of that unit, and to move one may raise its flags:
  // only the top of its stack is anybody's promise.
  constexpr std::uint16_t kTop = 0x3800;
  state.x87_status &= kTop;
#endif
  return state;
}

std::string fp_difference(const FpState& before, const FpState& after) {
  constexpr std::uint32_t kFlags = 0x3F;
  if ((before.mxcsr & ~kFlags) != (after.mxcsr & ~kFlags))
    return fmt::format("the floating-point control word (MXCSR {:#06x}, was {:#06x})", after.mxcsr,
                       before.mxcsr);
  if (before.x87_control != after.x87_control)
    return fmt::format("the x87 control word ({:#06x}, was {:#06x})", after.x87_control,
                       before.x87_control);
  if (before.mxcsr != after.mxcsr)
    return fmt::format("the floating-point status flags (MXCSR {:#06x}, was {:#06x})", after.mxcsr,
                       before.mxcsr);
  if (before.x87_status != after.x87_status)
    return fmt::format("the x87 status word ({:#06x}, was {:#06x})", after.x87_status,
                       before.x87_status);
  return {};
}

#else

FpState fp_state() {
  return {std::fegetround(), fegetexcept(), std::fetestexcept(FE_ALL_EXCEPT)};
}

std::string fp_difference(const FpState& before, const FpState& after) {
  if (before.rounding != after.rounding) return "the rounding direction";
  if (before.traps != after.traps) return "which floating-point exceptions trap";
  if (before.flags != after.flags)
    return fmt::format("the floating-point status flags ({:#x}, were {:#x})", after.flags,
                       before.flags);
  return {};
}

#endif

}  // namespace packcheck
