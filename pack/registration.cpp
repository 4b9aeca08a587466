// Entering the pack into the host's catalogue, and removing it.
#include "pack/exports.hpp"
#include "pack/module_handle.hpp"

namespace {

// {5C1E07A2-3D94-4B6F-8E21-A0B7C3D9E415}: names this pack; another pack carries its own.
const PackIdentifier kIdentifier = {{0xa2, 0x07, 0x1e, 0x5c, 0x94, 0x3d, 0x6f, 0x4b, 0x8e, 0x21,
                                     0xa0, 0xb7, 0xc3, 0xd9, 0xe4, 0x15}};

const PackIdentifier* pack_identifier() {
  return &kIdentifier;
}

}  // namespace

extern "C" std::int32_t DllRegisterServer() {
  return RegisterEfiFunctionPack(matrix_pack::module_handle(), pack_identifier());
}

extern "C" std::int32_t DllUnregisterServer() {
  return UnregisterEfiFunctionPack(pack_identifier());
}
