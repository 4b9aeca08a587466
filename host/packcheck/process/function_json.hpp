// A function on its way between processes.
#pragma once

#include <nlohmann/json.hpp>

#include "host/packcheck/pack.hpp"

namespace packcheck {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Function, name, row, symbol, argument_count, context)

}  // namespace packcheck
