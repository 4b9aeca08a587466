// What a signature descriptor says: the layout of the host's own sFunctionInfo.
#pragma once

#include "pack/host_interface.hpp"

// What a function accepts or gives; a pack still checks for itself.
enum class ArgumentKind : std::int32_t { any, number, matrix };

// A signature.
struct sFunctionInfo {
  std::int32_t argument_count;  // Context values included.
  ArgumentKind arguments[6];    // The first argument_count are of use.
  ArgumentKind result;          // Of a call without an error.
};
