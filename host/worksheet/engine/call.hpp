// A call of a function: its arguments, and where they stand.
#pragma once

#include <span>

#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/values/source.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

// The most arguments of a function.
inline constexpr std::size_t kMostArguments = kArgumentLimit.most;

struct Call {
  std::span<const Value> arguments;
  Span span;                     // Of the call as a whole,
  std::span<const Span> places;  // and of each argument.
};

}  // namespace worksheet
