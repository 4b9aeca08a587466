// The functions that the language has of its own.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/value.hpp"

namespace worksheet {

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

struct Elementary {
  const char* name;
  std::size_t argument_count;
  UnitUse units;
  // The arguments are as many as they should be and, but for UnitUse::own, without units; `spans`
  // are their places.
  Value (*evaluate)(Machine& machine, std::span<const Value> arguments, Span span,
                    std::span<const Span> spans);
};

// Null if there is none of that name.
const Elementary* find_elementary(std::string_view name);
const double* find_constant(std::string_view name);

// All their names, the constants' included.
std::vector<std::string> elementary_names();

Value call_elementary(Machine& machine, const Elementary& function,
                      std::span<const Value> arguments, Span span, std::span<const Span> spans);

}  // namespace worksheet
