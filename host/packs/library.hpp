// Loading libraries while a program runs: library_posix.cpp, library_windows.cpp.
#pragma once

#include <string>

namespace worksheet {

// Loads the library at a path, which is never looked up elsewhere. Null: *reason says why not.
void* open_library(const std::string& path, std::string* reason);
void close_library(void* library);

// The address of what the library shows under that name; null if nothing.
void* find_symbol(void* library, const char* name);

// What the names of libraries have behind the name proper: ".so" (and maybe a version), ".dll".
extern const char* const kLibraryEnding;

}  // namespace worksheet
