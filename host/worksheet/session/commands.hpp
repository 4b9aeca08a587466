// Statements about the session itself: who, clear, include, format. (`help` is in help/help.hpp.)
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

// The variable that holds the value of the last expression shown.
inline constexpr const char* kAnswer = "ans";

struct Command {
  enum class Kind {
    who,      // Lists the variables.
    clear,    // Forgets those named, or all.
    include,  // Runs the statements of a file in this place.
    format,   // Says how numbers are shown.
  };
  Kind kind = Kind::who;
  std::vector<std::string> names;
  std::string file;
  std::string format;  // Its words; empty to ask for it.
  bool is_quiet = false;
};

// Every word that begins such a statement.
inline constexpr const char* kCommandWords[] = {"who", "clear", "include", "format"};

// What the statement asks for; nothing for all others, also where a variable has the word's name.
std::optional<Command> command_in(std::string_view statement, const Machine& machine);

// What the worksheet defines, by name.
std::vector<const Variable*> variable_list(const Machine& machine);

// Forgets the variables; what functions of packs read stays as it is. Gives what is wrong, and then
// nothing has changed.
std::string clear_variables(Machine& machine, const std::vector<std::string>& names);

}  // namespace worksheet
