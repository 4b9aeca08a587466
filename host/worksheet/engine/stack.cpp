#include "host/worksheet/engine/stack.hpp"

#include <pthread.h>

#include <algorithm>
#include <cstddef>

#include "host/worksheet/engine/limits.hpp"

namespace worksheet {

namespace {

// What stays free for the functions of packs and for saying that the stack is low.
constexpr std::size_t kLeastReserve = 32u << 10;

const char* here() {
  return static_cast<const char*>(__builtin_frame_address(0));
}

// The address below which the thread's frames may not grow.
const char* lowest_frame() {
  pthread_attr_t attributes;
  void* end = nullptr;
  std::size_t size = 0;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return here() - kLeastReserve;
  pthread_attr_getstack(&attributes, &end, &size);
  pthread_attr_destroy(&attributes);
  const char* const top = static_cast<const char*>(end) + size;
  const std::size_t usable = std::min(size, kStackLimit.most);
  return top - usable + std::max(usable / 4, kLeastReserve);
}

}  // namespace

bool stack_is_low() {
  thread_local const char* const lowest = lowest_frame();
  return here() < lowest;
}

}  // namespace worksheet
