#include <fstream>
#include <sstream>

#include "host/packcheck/memory/address_space.hpp"

namespace packcheck {

AddressSpace::AddressSpace() {
  std::ifstream maps("/proc/self/maps");
  std::string line;
  while (std::getline(maps, line)) {
    std::istringstream fields(line);
    Mapping mapping;
    char dash;
    std::string rights;
    fields >> std::hex >> mapping.start >> dash >> mapping.end >> rights;
    mapping.readable = rights.starts_with('r');
    mapping.executable = rights.size() > 2 && rights[2] == 'x';
    mappings_.push_back(mapping);
  }
}

}  // namespace packcheck
