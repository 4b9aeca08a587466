// What files need of the platform: files_posix.cpp, files_windows.cpp.
#pragma once

#include <array>
#include <filesystem>
#include <string>

#include "host/efiutils/system/files.hpp"

namespace efi {

// What tells one temporary file from another.
inline constexpr std::size_t kMarkLength = 6;
using Mark = std::array<unsigned char, kMarkLength>;

// A temporary name for a file that is to stand under `name`; no other program makes such names.
std::string temporary_name(const std::string& name);

// --- The platform's ---

// A random mark.
Mark random_mark();

// The path with links in its last place followed, also where they lead to no file yet.
std::filesystem::path target_of(std::filesystem::path path);

}  // namespace efi
