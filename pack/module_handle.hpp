// The platform's handle of the module that this code is linked into.
#pragma once

namespace matrix_pack {

// On Windows what the loader's entry routine is given, elsewhere an address inside the module.
void* module_handle();

}  // namespace matrix_pack
