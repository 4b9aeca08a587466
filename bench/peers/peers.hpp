// The libraries that the pack is compared with.
#pragma once

#include <string>

namespace bench {

// Names, versions and settings of the peers in use, for the head of a table.
std::string peers(bool with_blis);

// Starts this program anew with the core type of OpenBLAS that is the fastest here, if it has not
// been chosen yet: OpenBLAS reads OPENBLAS_CORETYPE while it is loaded. `--probe` is the call with
// which it tries them.
void choose_core_type(char** argv);
int probe();

// Has every peer compute on one thread.
void use_one_thread();

}  // namespace bench
