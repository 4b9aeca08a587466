#include "pack/frame/fault_message.hpp"

#include "pack/frame/faults.hpp"
#include "pack/messages.hpp"

namespace matrix_pack {

const char* fault_message(std::uint32_t code) {
  switch (code) {
    case 0x80000001u:
      return "EXCEPTION_GUARD_PAGE";
    case 0x80000002u:
      return "EXCEPTION_DATATYPE_MISALIGNMENT";
    case 0x80000003u:
      return "EXCEPTION_BREAKPOINT";
    case 0x80000004u:
      return "EXCEPTION_SINGLE_STEP";
    case 0xC0000005u:
      return "EXCEPTION_ACCESS_VIOLATION";
    case 0xC0000006u:
      return "EXCEPTION_IN_PAGE_ERROR";
    case 0xC000001Du:
      return "EXCEPTION_ILLEGAL_INSTRUCTION";
    case 0xC0000025u:
      return "EXCEPTION_NONCONTINUABLE_EXCEPTION";
    case 0xC0000026u:
      return "EXCEPTION_INVALID_DISPOSITION";
    case 0xC000008Cu:
      return "EXCEPTION_ARRAY_BOUNDS_EXCEEDED";
    case 0xC000008Du:
      return "EXCEPTION_FLT_DENORMAL_OPERAND";
    case kFaultDivideByZero:
      return kSingularity;
    case 0xC000008Fu:
      return "EXCEPTION_FLT_INEXACT_RESULT";
    case kFaultInvalid:
      return "floating point error";
    case kFaultOverflow:
      return kOverflow;
    case 0xC0000092u:
      return "EXCEPTION_FLT_STACK_CHECK";
    case 0xC0000093u:
      return "EXCEPTION_FLT_UNDERFLOW";
    case 0xC0000094u:
      return "EXCEPTION_INT_DIVIDE_BY_ZERO";
    case 0xC0000095u:
      return "EXCEPTION_INT_OVERFLOW";
    case 0xC0000096u:
      return "EXCEPTION_PRIV_INSTRUCTION";
    case 0xC00000FDu:
      return "EXCEPTION_STACK_OVERFLOW";
    default:
      return "EXCEPTION_UNKNOWN_EXCEPTION";
  }
}

}  // namespace matrix_pack
