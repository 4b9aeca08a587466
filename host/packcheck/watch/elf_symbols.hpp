// The symbols that a library shows to the dynamic linker, read from its file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace packcheck {

struct Symbol {
  std::string name;
  std::uint64_t size;
};

// The defined symbols; none when the file is no library of this machine's.
std::vector<Symbol> shown_symbols(const std::string& path);

}  // namespace packcheck
