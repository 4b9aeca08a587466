// The way out of a pack's function that takes too long.
//
// A pack has nobody to ask whether to go on, and a process for every call would cost more than most
// calls take. So a signal handler jumps out of the call (on Windows another thread makes the one of
// the call do so), but only while the processor is in the pack's own code: no lock of the C library
// or of the host is held then. What the call has taken from memory stays taken; a pack that keeps
// something between calls may keep half of it. leave_posix.cpp, leave_windows.cpp.
#pragma once

#include <functional>

#include "pack/host_interface.hpp"

namespace worksheet {

// Takes note of the code of the library in which `symbol` stands, or forgets it.
void add_pack_code(const void* symbol);
void forget_pack_code(const void* symbol);

// Lets `entry`, a call of a pack's function, give *result. False when the call was left: the
// floating-point control words are then those of a signal handler. Passes exceptions on.
bool run_to_leave(const std::function<Anyval*()>& entry, Anyval** result);

// --- In a signal handler of the thread that makes the calls, or while that stands still ---

// Whether such a call is under way.
bool is_in_pack_call();
// Leaves the innermost call. False where that cannot be at this moment. `context` is what was
// interrupted: a ucontext_t, and then this does not come back; or a CONTEXT, with which the thread
// is to go on.
bool leave_pack_call(void* context);

}  // namespace worksheet
