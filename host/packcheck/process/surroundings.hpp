// What packcheck sets up around itself: surroundings_posix.cpp, surroundings_windows.cpp.
#pragma once

#include <filesystem>
#include <string>

namespace packcheck {

// A new directory that is this user's only. Throws std::runtime_error.
std::filesystem::path new_directory();

void set_variable(const char* name, const std::string& value);

// From now on lost output is an error, not a signal.
void tell_of_lost_output();

}  // namespace packcheck
