// Help, laid out as text.
#pragma once

#include <string>

#include "host/worksheet/help/help.hpp"

namespace worksheet {

// The page in lines of `width` characters.
std::string help_text(const HelpPage& page, int width);

}  // namespace worksheet
