// The exceptions that stand for processor faults.
//
// A host that turns faults into C++ exceptions throws SE_FPE_Exception with the fault's code; the
// pack itself throws only SE_FPEOverflow_Exception. The classes are matched by name across
// libraries, so everything here is inline.
#pragma once

#include <cstdint>

#include "pack/frame/fp_control.hpp"

// Structured-exception codes of the three faults that the guard unmasks.
inline constexpr std::uint32_t kFaultDivideByZero = 0xC000008Eu;
inline constexpr std::uint32_t kFaultInvalid = 0xC0000090u;
inline constexpr std::uint32_t kFaultOverflow = 0xC0000091u;

// What a host throws for a structured exception.
struct SE_Exception {
  // For a fault with this code.
  explicit SE_Exception(std::uint32_t exception_code, std::uint32_t second_word = 0)
      : code(exception_code), word(second_word) {}
  std::uint32_t code;  // Such as kFaultDivideByZero.
  std::uint32_t word;  // The host's own.
};

// An arithmetic fault. Holds the floating-point status as it was at the throw; making one clears
// the pending flags.
struct SE_FPE_Exception : SE_Exception {
  // For a fault with this code.
  explicit SE_FPE_Exception(std::uint32_t exception_code)
      : SE_Exception(exception_code), status(_clearfp()) {}
  // Which of the faults it is, where its class says so.
  virtual bool is_overflow() const { return false; }
  virtual bool is_division_by_zero() const { return false; }
  virtual bool is_invalid() const { return false; }

  std::uint32_t status;  // What _clearfp returned.
};

// Overflow, as the pack itself throws it where a modulus exceeds 1e307.
struct SE_FPEOverflow_Exception : SE_FPE_Exception {
  SE_FPEOverflow_Exception() : SE_FPE_Exception(kFaultOverflow) {}
  bool is_overflow() const override { return true; }
};
