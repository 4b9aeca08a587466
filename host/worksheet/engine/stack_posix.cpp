#include <pthread.h>

#include <algorithm>
#include <cstddef>

#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/stack.hpp"

namespace worksheet {

constinit thread_local const char* lowest_frame = nullptr;

const char* find_lowest_frame() {
  // Stays free for the functions of packs, and for saying that the stack is low.
  constexpr std::size_t kLeastReserve = 32u << 10;
  pthread_attr_t attributes;
  void* end = nullptr;
  std::size_t size = 0;
  if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
    pthread_attr_getstack(&attributes, &end, &size);
    pthread_attr_destroy(&attributes);
    const std::size_t usable = std::min(size, kStackLimit.most);
    lowest_frame =
        static_cast<const char*>(end) + size - usable + std::max(usable / 4, kLeastReserve);
  } else {
    lowest_frame = static_cast<const char*>(__builtin_frame_address(0)) - kLeastReserve;
  }
  return lowest_frame;
}

}  // namespace worksheet
