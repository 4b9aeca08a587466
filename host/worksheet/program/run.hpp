// A run of the program: the worksheets that its options name, or the prompt.
#pragma once

#include "host/worksheet/program/options.hpp"
#include "host/worksheet/program/system/standard_output.hpp"

namespace worksheet {

// Throws std::runtime_error for what ends the program with wrong usage, or without its output.
Status run(const Options& options, StandardOutput& output);

}  // namespace worksheet
