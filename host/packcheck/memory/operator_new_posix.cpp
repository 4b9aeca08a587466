// The loader sees to it.
#include "host/packcheck/memory/operator_new.hpp"

namespace packcheck {

void share_operator_new() {}

}  // namespace packcheck
