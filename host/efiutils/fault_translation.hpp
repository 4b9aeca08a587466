// Turning the processor's arithmetic faults into C++ exceptions.
#pragma once

namespace efi {

#pragma GCC visibility push(default)

// From now on an arithmetic fault (SIGFPE) throws an SE_FPE_Exception with the fault's code from
// the instruction at fault. Code that may fault is compiled with -fnon-call-exceptions.
void install_fault_translation();

#pragma GCC visibility pop

}  // namespace efi
