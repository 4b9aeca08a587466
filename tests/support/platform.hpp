// What tests need of the platform: platform_posix.cpp, platform_windows.cpp.
#pragma once

#include <cstddef>
#include <vector>

namespace test {

// The signals by which a program that goes astray ends.
std::vector<int> crash_signals();

// The memory of this process that is in use, in bytes.
long long resident_bytes();

// Runs `body` in a thread with a stack of so many bytes, or the fewest that the platform allows;
// false when there is no thread.
bool run_on_stack(std::size_t bytes, void (*body)());

}  // namespace test
