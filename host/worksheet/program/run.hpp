// A run of the program: the worksheets that its options name, or the prompt.
#pragma once

#include "host/worksheet/program/options.hpp"

namespace worksheet {

// Throws std::runtime_error for what ends the program with wrong usage.
Status run(const Options& options);

}  // namespace worksheet
