// How much stack is left.
#pragma once

namespace worksheet {

// Whether the calling thread has used what evaluations may use of its stack (kStackLimit). What
// nests as the input says asks before it goes deeper.
bool stack_is_low();

}  // namespace worksheet
