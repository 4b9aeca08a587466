#include <system_error>

#include "host/efiutils/fault_landing.hpp"
#include "host/efiutils/fault_translation.hpp"
#include "pack/frame/faults.hpp"

namespace efi {

void efi_throw_fault(std::uint32_t code) {
  throw SE_FPE_Exception(code);
}

namespace {

// The three that a pack lets stop are told apart by the flags: some systems report every fault of
// SSE with one code.
std::uint32_t fault_code(const EXCEPTION_RECORD& record, const CONTEXT& context) {
  const std::uint32_t flags = sse_fault_flags(context);
  if ((flags & matrix_pack::kInvalidFlag) != 0) return kFaultInvalid;
  if ((flags & matrix_pack::kDivideByZeroFlag) != 0) return kFaultDivideByZero;
  if ((flags & matrix_pack::kOverflowFlag) != 0) return kFaultOverflow;
  return record.ExceptionCode;
}

// Whether it is one of arithmetic, raised by an instruction.
bool is_fault(const EXCEPTION_RECORD& record) {
  if ((record.ExceptionFlags & EXCEPTION_NONCONTINUABLE) != 0) return false;
  switch (record.ExceptionCode) {
    case STATUS_FLOAT_DENORMAL_OPERAND:
    case STATUS_FLOAT_DIVIDE_BY_ZERO:
    case STATUS_FLOAT_INEXACT_RESULT:
    case STATUS_FLOAT_INVALID_OPERATION:
    case STATUS_FLOAT_OVERFLOW:
    case STATUS_FLOAT_STACK_CHECK:
    case STATUS_FLOAT_UNDERFLOW:
    case STATUS_FLOAT_MULTIPLE_FAULTS:
    case STATUS_FLOAT_MULTIPLE_TRAPS:
    case STATUS_INTEGER_DIVIDE_BY_ZERO:
    case STATUS_INTEGER_OVERFLOW:
      return true;
    default:
      return false;
  }
}

LONG CALLBACK on_exception(EXCEPTION_POINTERS* exception) {
  const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
  if (!is_fault(record)) return EXCEPTION_CONTINUE_SEARCH;
  const bool is_integer = record.ExceptionCode == STATUS_INTEGER_DIVIDE_BY_ZERO ||
                          record.ExceptionCode == STATUS_INTEGER_OVERFLOW;
  CONTEXT& context = *exception->ContextRecord;
  land(context, is_integer ? record.ExceptionCode : fault_code(record, context));
  return EXCEPTION_CONTINUE_EXECUTION;
}

}  // namespace

void install_fault_translation() {
  constexpr ULONG kFirst = 1;
  static const bool is_installed = AddVectoredExceptionHandler(kFirst, on_exception) != nullptr;
  if (!is_installed)
    throw std::system_error(ERROR_NOT_ENOUGH_MEMORY, std::system_category(),
                            "AddVectoredExceptionHandler");
}

}  // namespace efi
