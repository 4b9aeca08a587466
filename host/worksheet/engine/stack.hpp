// How much stack is left.
#pragma once

namespace worksheet {

// The address below which frames of the calling thread may not lie; null: not asked for yet.
extern constinit thread_local const char* lowest_frame;
const char* find_lowest_frame();

// Whether the calling thread has used what evaluations may use of its stack (kStackLimit). What
// nests as the input says asks before it goes deeper.
inline bool stack_is_low() {
  const char* const lowest = lowest_frame != nullptr ? lowest_frame : find_lowest_frame();
  return static_cast<const char*>(__builtin_frame_address(0)) < lowest;
}

}  // namespace worksheet
