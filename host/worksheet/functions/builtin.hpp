// The functions that the language has of its own.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/worksheet/engine/call.hpp"

namespace worksheet {

class Machine;

// How a function treats the unit of its arguments.
enum class UnitUse {
  keep,     // The result has the first argument's unit; the other arguments are plain.
  root,     // ... the square root of it.
  drop,     // ... none, whatever the first argument has.
  same,     // All arguments and the result have one unit.
  compare,  // All arguments have one unit, the result has none.
  product,  // The result has the product of the arguments' units.
  plain,    // Plain numbers only.
  own,      // The function sees to the units itself; nothing is scaled.
};

// The most arguments of a function that takes any number.
inline constexpr std::size_t kAnyCount = static_cast<std::size_t>(-1);

struct Builtin {
  const char* name;
  std::size_t least, most;  // Arguments.
  UnitUse units;
  // The arguments are as many as they should be and, but for UnitUse::own, without units.
  Value (*evaluate)(Machine& machine, const Call& call);
};

// Null if there is none of that name.
const Builtin* find_builtin(std::string_view name);
const double* find_constant(std::string_view name);

// All their names, the constants' included.
std::vector<std::string> builtin_names();

// How many arguments it takes: "2 arguments", "1 or 2 arguments", "at least 1 argument".
std::string counts_text(const Builtin& function);

Value call_builtin(Machine& machine, const Builtin& function, const Call& call);

}  // namespace worksheet
