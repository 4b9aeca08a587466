// The packs of a session.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

// Hears what is worth knowing about a pack: one that is left out, or hides functions of another.
using Say = std::function<void(std::string_view)>;

// Loads the packs at these paths; without any those of the catalogue; without any the one beside
// the program. Throws PackError when one of the paths leads to no pack, or there is none at all.
void load_packs(Machine& machine, std::span<const std::string> paths, const Say& say);

}  // namespace worksheet
