#include <windows.h>

#include <algorithm>
#include <cstddef>

#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/stack.hpp"

namespace worksheet {

constinit thread_local const char* lowest_frame = nullptr;

const char* find_lowest_frame() {
  // Stays free for the functions of packs, and for saying that the stack is low.
  constexpr std::size_t kLeastReserve = 32u << 10;
  ULONG_PTR low = 0, high = 0;
  GetCurrentThreadStackLimits(&low, &high);
  const std::size_t usable = std::min<std::size_t>(high - low, kStackLimit.most);
  lowest_frame = reinterpret_cast<const char*>(high - usable + std::max(usable / 4, kLeastReserve));
  return lowest_frame;
}

}  // namespace worksheet
