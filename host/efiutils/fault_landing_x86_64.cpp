#include "host/efiutils/fault_landing.hpp"
#include "pack/frame/fp_control.hpp"

// The landing: the code comes in ecx, and the address in the function at fault stands where that of
// a caller does. The stack may be aligned to 8 bytes only.
asm(R"(
	.text
	.globl efi_fault_landing
	.seh_proc efi_fault_landing
efi_fault_landing:
	pushq %rbp
	.seh_pushreg %rbp
	movq %rsp, %rbp
	.seh_setframe %rbp, 0
	.seh_endprologue
	andq $-16, %rsp
	subq $32, %rsp
	call efi_throw_fault
	nop
	.seh_endproc
)");
extern "C" void efi_fault_landing();

namespace efi {

namespace {

// The address by which the unwinder is to find the function at fault. It looks for a clause that
// holds the byte before it; but of a function without clauses it reads instructions there, to see
// whether the function is about to return, and so wants the start of one. (What looks like a return
// behind the first byte of an instruction begins in none but vector instructions of AVX, and those
// stand in kernels, which have no clauses.)
DWORD64 address_of_fault(DWORD64 at) {
  constexpr unsigned kHasHandler = UNW_FLAG_EHANDLER | UNW_FLAG_UHANDLER;
  DWORD64 base = 0;
  const RUNTIME_FUNCTION* const function = RtlLookupFunctionEntry(at, &base, nullptr);
  if (function == nullptr) return at;
  const auto* const information =
      reinterpret_cast<const std::uint8_t*>(base) + function->UnwindData;
  constexpr int kVersionBits = 3;  // In front of the flags.
  return (information[0] >> kVersionBits & kHasHandler) != 0 ? at + 1 : at;
}

}  // namespace

std::uint32_t sse_fault_flags(const CONTEXT& context) {
  constexpr int kMaskBits = 7;  // The masks stand so far above the flags.
  return context.MxCsr & ~(context.MxCsr >> kMaskBits) & 0x3Fu;
}

void land(CONTEXT& context, std::uint32_t code) {
  context.Rsp -= sizeof(DWORD64);
  *reinterpret_cast<DWORD64*>(context.Rsp) = address_of_fault(context.Rip);
  context.Rip = reinterpret_cast<DWORD64>(&efi_fault_landing);
  context.Rcx = code;
  context.MxCsr = matrix_pack::kAllMasked | (context.MxCsr & 0x3Fu);
  context.FltSave.MxCsr = context.MxCsr;
  context.FltSave.TagWord = 0;
  context.FltSave.StatusWord &= static_cast<WORD>(~0x3800u);
}

}  // namespace efi
