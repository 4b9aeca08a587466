// The program as a process: process_posix.cpp, process_windows.cpp.
#pragma once

#include <cstdint>
#include <optional>

namespace worksheet {

// Makes the system tell of lost output by errors, not by signals, and sees to it that no file gets
// the number of a standard stream that is closed.
void guard_standard_streams();

// From now on memory beyond that cannot be had, but for stack and what only reads from files.
// Throws std::runtime_error.
void limit_memory(std::uint64_t bytes);

// The columns of the terminal behind standard output, and whether it takes colours.
std::optional<int> terminal_width();
bool terminal_takes_colour();

}  // namespace worksheet
