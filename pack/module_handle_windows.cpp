#include "pack/module_handle.hpp"

// The linker's name for the start of the module.
extern "C" char __ImageBase;

void* matrix_pack::module_handle() {
  return &__ImageBase;
}
