#include "host/worksheet/session/memory_reserve.hpp"

#include <cstddef>
#include <memory>
#include <new>

namespace worksheet {

namespace {

// Large enough for the allocator to give it back to the system at once, and for any message.
constexpr std::size_t kReserve = std::size_t{256} << 10;

std::unique_ptr<char[]> reserve;

// The request that failed is not tried again: it may be larger than the reserve.
void spend_reserve() {
  reserve.reset();
  throw std::bad_alloc();
}

}  // namespace

void keep_memory_reserve() {
  if (reserve != nullptr) return;
  std::set_new_handler(spend_reserve);
  reserve.reset(new (std::nothrow) char[kReserve]);
}

}  // namespace worksheet
