// The symbols that a library shows to the dynamic linker, read from its file:
// library_symbols_posix.cpp (ELF), library_symbols_windows.cpp (PE).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace packcheck {

struct Symbol {
  std::string name;
  std::uint64_t size;  // 0 where libraries do not tell.
};

// The defined symbols; none when the file is no library of this machine's.
std::vector<Symbol> shown_symbols(const std::string& path);

// The size of the object of a loaded library that begins at the address, or the most that it can
// be; 0 where nothing is known of it.
std::size_t object_size(const void* address);

}  // namespace packcheck
