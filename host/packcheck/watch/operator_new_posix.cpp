// The loader sees to it.
#include "host/packcheck/watch/operator_new.hpp"

namespace packcheck {

void share_operator_new() {}

}  // namespace packcheck
