// A session's variables and functions in a file, from which another session goes on.
//
//   {"worksheet_state": 1, "unit_origins": {NAME: ORIGIN, ...}, "variables": [STATEMENT, ...]}
//
// Each STATEMENT is the object that --json prints for one: its name and its value. The source of a
// function is its definition; no other source is read. How a value came to have its unit
// decides how it is shown: "calculated" or "asked" with "in"; else it was written.
#pragma once

#include <stdexcept>
#include <string>

namespace worksheet {

class Machine;

// How the file calls the origins of units.
inline constexpr const char* kCalculatedOrigin = "calculated";
inline constexpr const char* kAskedOrigin = "asked";

// Why a state cannot be saved or loaded; the words do not name the file.
struct StateError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The variables of the machine as text. Throws StateError for what cannot be loaded again: too deep
// or too large a value.
std::string state_text(const Machine& machine);

// Gives the machine the variables of the text, whoever wrote it; takes no more than a few times its
// size. Throws StateError, and then the machine is not to be used.
void load_state(Machine& machine, const std::string& text);

}  // namespace worksheet
