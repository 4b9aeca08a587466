// The variables that are kept between runs: --save and --load.
#pragma once

#include <string>

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/program/options.hpp"

namespace worksheet {

// Throws std::runtime_error, before anything is evaluated, when there will be no place to save to.
void check_state_file(const Options& options);

// Throws std::runtime_error.
void load_variables(Machine& machine, const std::string& path);

// False, said, when they could not be saved.
bool save_variables(const Machine& machine, const std::string& path);

}  // namespace worksheet
