// The catalogue of function packs.
#include "pack/host_interface.hpp"

std::int32_t RegisterEfiFunctionPack(void*, const PackIdentifier*) {
  return 1;
}

std::int32_t UnregisterEfiFunctionPack(const PackIdentifier*) {
  return 1;
}
