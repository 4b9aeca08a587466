// The language's words, for editors.
#pragma once

#include <string>

#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

// "KIND WORD" a line, sorted: keywords, commands, functions of the language and of the packs,
// constants, and variables that are always there.
std::string word_list(const Machine& machine);

}  // namespace worksheet
