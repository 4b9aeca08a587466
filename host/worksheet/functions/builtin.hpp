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
  keep,   // The result has the argument's unit.
  root,   // ... the square root of it.
  same,   // Both arguments and the result have one unit.
  plain,  // Plain numbers only.
  own,    // The function sees to the units itself; nothing is scaled.
};

// The argument count of a function that takes any number.
inline constexpr std::size_t kAnyCount = static_cast<std::size_t>(-1);

struct Builtin {
  const char* name;
  std::size_t argument_count;
  UnitUse units;
  // The arguments are as many as they should be and, but for UnitUse::own, without units.
  Value (*evaluate)(Machine& machine, const Call& call);
};

// Null if there is none of that name.
const Builtin* find_builtin(std::string_view name);
const double* find_constant(std::string_view name);

// All their names, the constants' included.
std::vector<std::string> builtin_names();

Value call_builtin(Machine& machine, const Builtin& function, const Call& call);

}  // namespace worksheet
