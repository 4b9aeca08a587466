#include "pack/module_handle.hpp"

extern "C" __attribute__((visibility("hidden"))) void* __dso_handle;

void* matrix_pack::module_handle() {
  return &__dso_handle;
}
