// The blocks of malloc that this process holds. Where malloc cannot be replaced (the C library is
// not glibc) none are counted, and none are refused.
#pragma once

#include <cstdint>

namespace packcheck::malloc_count {

std::int64_t held();

}  // namespace packcheck::malloc_count
