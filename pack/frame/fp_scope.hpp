// Stretches of floating-point arithmetic, entered on construction and left on destruction: FpKeeper
// leaves the environment as it was found, FpScope also sets up guarded arithmetic. FpState is the
// environment as it was at a point to which a computation may have to go back.
#pragma once

#include "pack/frame/fault_mode.hpp"
#include "pack/frame/faults.hpp"
#include "pack/frame/fp_control.hpp"

namespace matrix_pack {

#if MATRIX_HAS_MXCSR

// The control word and the status flags.
struct FpState {
  FpState() : saved(_mm_getcsr()) {}
  explicit FpState(std::uint32_t control) : saved(control) {}
  // The environment in which a guarded body begins. (To read it just then takes some 90 ns: the
  // load of the register is still under way.)
  static FpState guarded() { return FpState(faults_trap() ? kTrapping : kAllMasked); }
  void restore() const { _mm_setcsr(saved); }

  std::uint32_t saved;
};

struct FpScope {
  FpScope() : saved(_mm_getcsr()) {
    asm volatile("fnstcw %0" : "=m"(saved_x87));
    FpState::guarded().restore();
  }
  ~FpScope() {
    _mm_setcsr(saved);
    // A fault's signal frame resets the x87 unit; its control word is loaded (slowly) only then.
    std::uint16_t x87;
    asm volatile("fnstcw %0" : "=m"(x87));
    if (x87 != saved_x87) asm volatile("fldcw %0" : : "m"(saved_x87));
  }
  FpScope(const FpScope&) = delete;
  FpScope& operator=(const FpScope&) = delete;

  std::uint32_t saved;
  std::uint16_t saved_x87;
};

// The code of the first fault, in the order of the guard's own precedence, that the status flags
// hold; 0 if none. Only of use where faults do not trap.
inline std::uint32_t pending_fault() {
  const std::uint32_t flags = _mm_getcsr();
  if (flags & kDivideByZeroFlag) return kFaultDivideByZero;
  if (flags & kInvalidFlag) return kFaultInvalid;
  if (flags & kOverflowFlag) return kFaultOverflow;
  return 0;
}

#else

struct FpState {
  FpState() { std::fegetenv(&saved); }
  static FpState guarded() { return FpState(); }
  void restore() const { std::fesetenv(&saved); }

  std::fenv_t saved;
};

struct FpScope {
  FpScope() {
    std::feholdexcept(&saved);
    std::fesetround(FE_TONEAREST);
  }
  ~FpScope() { std::fesetenv(&saved); }
  FpScope(const FpScope&) = delete;
  FpScope& operator=(const FpScope&) = delete;

  std::fenv_t saved;
};

inline std::uint32_t pending_fault() {
  const int flags = std::fetestexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW);
  if (flags & FE_DIVBYZERO) return kFaultDivideByZero;
  if (flags & FE_INVALID) return kFaultInvalid;
  if (flags & FE_OVERFLOW) return kFaultOverflow;
  return 0;
}

#endif

// Puts the environment back as it was.
struct FpKeeper {
  FpKeeper() = default;
  ~FpKeeper() { state.restore(); }
  FpKeeper(const FpKeeper&) = delete;
  FpKeeper& operator=(const FpKeeper&) = delete;

  FpState state;
};

}  // namespace matrix_pack
