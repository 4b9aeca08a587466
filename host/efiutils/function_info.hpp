// What a signature descriptor says: the layout of the host's own sFunctionInfo.
#pragma once

#include "pack/host_interface.hpp"

enum class ArgumentKind : std::int32_t { any, number, matrix };

struct sFunctionInfo {
  std::int32_t argument_count;  // Context values included.
  ArgumentKind arguments[6];
  ArgumentKind result;
};
