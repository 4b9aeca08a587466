#include <cstring>

#include "host/efiutils/fault_landing.hpp"
#include "pack/frame/fp_control.hpp"

// The landing: the code comes in ecx, and the address of the instruction at fault stands where that
// of a caller does. As in the frame of a signal, it is the instruction's own. The stack may be
// aligned to 4 bytes only.
asm(R"(
	.text
	.globl _efi_fault_landing
_efi_fault_landing:
	.cfi_startproc
	.cfi_signal_frame
	pushl %ebp
	.cfi_def_cfa_offset 8
	.cfi_offset %ebp, -8
	movl %esp, %ebp
	.cfi_def_cfa_register %ebp
	andl $-16, %esp
	subl $16, %esp
	movl %ecx, (%esp)
	call _efi_throw_fault
	nop
	.cfi_endproc
)");
extern "C" void efi_fault_landing();

namespace efi {

namespace {

// The second area in which the x87 and SSE registers are saved, laid out as FXSAVE does.
constexpr std::size_t kStatusAt = 2, kTagAt = 4, kMxcsrAt = 24;

template <class Word>
Word word_at(const CONTEXT& context, std::size_t at) {
  Word word;
  std::memcpy(&word, context.ExtendedRegisters + at, sizeof word);
  return word;
}

template <class Word>
void set_word(CONTEXT& context, std::size_t at, Word word) {
  std::memcpy(context.ExtendedRegisters + at, &word, sizeof word);
}

constexpr std::uint32_t kTop = 0x3800;  // Of the status word: which register is the first.

}  // namespace

std::uint32_t sse_fault_flags(const CONTEXT& context) {
  constexpr int kMaskBits = 7;  // The masks stand so far above the flags.
  const auto mxcsr = word_at<std::uint32_t>(context, kMxcsrAt);
  return mxcsr & ~(mxcsr >> kMaskBits) & 0x3Fu;
}

void land(CONTEXT& context, std::uint32_t code) {
  context.Esp -= sizeof(DWORD);
  *reinterpret_cast<DWORD*>(context.Esp) = context.Eip;
  context.Eip = reinterpret_cast<DWORD>(&efi_fault_landing);
  context.Ecx = code;
  const auto mxcsr = word_at<std::uint32_t>(context, kMxcsrAt);
  set_word(context, kMxcsrAt, matrix_pack::kAllMasked | (mxcsr & 0x3Fu));
  context.FloatSave.TagWord |= 0xFFFFu;
  context.FloatSave.StatusWord &= ~kTop;
  set_word(context, kTagAt, std::uint16_t{0});
  set_word(context, kStatusAt,
           static_cast<std::uint16_t>(word_at<std::uint16_t>(context, kStatusAt) & ~kTop));
}

}  // namespace efi
