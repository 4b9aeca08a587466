// What the library needs of the platform, besides files (files_platform.hpp): platform_posix.cpp,
// platform_windows.cpp.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/efiutils/system/files.hpp"

namespace efi {

#pragma GCC visibility push(default)

// Memory of zeros below 4 GiB; null when it cannot be had. Gives it back.
void* map_low(std::size_t bytes);
void unmap_low(void* memory, std::size_t bytes);

// The value of an environment variable; empty if there is none.
std::string environment(const char* name);

// The arguments of the program, its name first.
std::vector<std::string> program_arguments(int argc, char** argv);

// The path of the program that runs; empty when it is not known.
std::string program_path();

// Whether what is read or written there is a terminal.
bool is_terminal(int descriptor);

// The directory in which programs keep data of the user's.
std::string user_data();

// The path of the library in which an address stands; empty when it is not known.
std::string library_of(const void* address);

// Opens a lock, and makes it if need be; only a file of that name is one. Negative: errno says why
// not.
Descriptor open_lock(const std::string& path);
// Waits for the lock, which goes with the descriptor. False: errno says why not.
bool take_lock(int descriptor);

// Waits for so many milliseconds until something can be written or read: positive; 0 when it
// cannot, negative when a signal came. Of what is no file, kPipeRoom bytes can then be written
// without waiting, where the platform tells.
inline constexpr unsigned kPipeRoom = 4096;
int wait_for_room(int descriptor, int milliseconds);
int wait_for_input(int descriptor, int milliseconds);

#pragma GCC visibility pop

}  // namespace efi
