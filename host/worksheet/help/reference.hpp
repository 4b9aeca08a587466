// The reference of all functions: what `help` and --functions know.
#pragma once

#include <vector>

#include "host/packs/reference.hpp"

namespace worksheet {

class Machine;

// The reference of the packs, in their order, then that of the language.
std::vector<ReferenceEntry> whole_reference(const Machine& machine);

// The reference of the language itself.
extern const char* const kLanguageReference;

}  // namespace worksheet
