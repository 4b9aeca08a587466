// Where the thread of a fault goes on, one file for each processor (Windows).
//
// A vectored handler must not throw: the dispatcher of exceptions stands between it and the code at
// fault. It edits the context so that the thread goes on in a small function, as if the instruction
// at fault had called it, and that function throws.
#pragma once

#include <windows.h>

#include <cstdint>

namespace efi {

// The status flags that say why an SSE instruction stopped: those that are set and not masked.
std::uint32_t sse_fault_flags(const CONTEXT& context);

// Edits the context so that the thread throws SE_FPE_Exception(code). The x87 registers are emptied
// (what stood there is lost, and slots that stay taken run out) and all exceptions masked: nothing
// may fault while a fault is on its way.
void land(CONTEXT& context, std::uint32_t code);

// The end of the landing, called by its name.
extern "C" [[noreturn]] void efi_throw_fault(std::uint32_t code);

}  // namespace efi
