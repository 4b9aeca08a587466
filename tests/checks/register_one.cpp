// Enters a pack with an identifier of its own into the catalogue: register_one NUMBER
#include <cstdio>
#include <cstdlib>

#include "host/efiutils/catalogue.hpp"
#include "pack/host_interface.hpp"

int main(int argc, char** argv) {
  const PackIdentifier identifier = {
      {static_cast<std::uint8_t>(argc > 1 ? std::atoi(argv[1]) : 0)}};
  const std::int32_t status = RegisterEfiFunctionPack(&sError_OutOfMemory, &identifier);
  if (status != 0) std::fprintf(stderr, "%s\n", efi::catalogue_failure().c_str());
  return status;
}
