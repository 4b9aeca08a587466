// The exceptions that stand for processor faults.
//
// A host that turns faults into C++ exceptions throws SE_FPE_Exception with the fault's code; the
// pack itself throws only SE_FPEOverflow_Exception. The classes are matched by name across
// libraries, so everything here is inline.
#pragma once

#include <cstdint>

#include "pack/fp_control.hpp"

// Structured-exception codes of the three faults that the guard unmasks.
inline constexpr std::uint32_t kFaultDivideByZero = 0xC000008Eu;
inline constexpr std::uint32_t kFaultInvalid = 0xC0000090u;
inline constexpr std::uint32_t kFaultOverflow = 0xC0000091u;

struct SE_Exception {
  explicit SE_Exception(std::uint32_t exception_code, std::uint32_t second_word = 0)
      : code(exception_code), word(second_word) {}
  std::uint32_t code;
  std::uint32_t word;
};

// Holds the floating-point status as it was at the throw; making one clears the pending flags.
struct SE_FPE_Exception : SE_Exception {
  explicit SE_FPE_Exception(std::uint32_t exception_code)
      : SE_Exception(exception_code), status(_clearfp()) {}
  virtual bool is_overflow() const { return false; }
  virtual bool is_division_by_zero() const { return false; }
  virtual bool is_invalid() const { return false; }
  std::uint32_t status;
};

struct SE_FPEOverflow_Exception : SE_FPE_Exception {
  SE_FPEOverflow_Exception() : SE_FPE_Exception(kFaultOverflow) {}
  bool is_overflow() const override { return true; }
};
