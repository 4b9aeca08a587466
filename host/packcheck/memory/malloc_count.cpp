#include "host/packcheck/memory/malloc_count.hpp"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include "host/packcheck/memory/heap.hpp"

namespace {

std::atomic<std::int64_t> blocks = 0;

}  // namespace

namespace packcheck::malloc_count {

std::int64_t held() {
  return blocks;
}

}  // namespace packcheck::malloc_count

#ifdef __GLIBC__

// The C library's own, under the names by which it keeps them reachable.
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);
}

namespace {

void* counted(void* block) {
  if (block != nullptr) ++blocks;
  return block;
}

bool refused() {
  if (!packcheck::heap::refuses()) return false;
  errno = ENOMEM;
  return true;
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

void* malloc(std::size_t bytes) noexcept {
  return refused() ? nullptr : counted(__libc_malloc(bytes));
}

void* calloc(std::size_t count, std::size_t bytes) noexcept {
  return refused() ? nullptr : counted(__libc_calloc(count, bytes));
}

void* realloc(void* block, std::size_t bytes) noexcept {
  if (refused()) return nullptr;
  void* const moved = __libc_realloc(block, bytes);
  // A block of no bytes is freed, a null one is made.
  if (block == nullptr) return counted(moved);
  if (moved == nullptr && bytes == 0) --blocks;
  return moved;
}

void* memalign(std::size_t alignment, std::size_t bytes) noexcept {
  return refused() ? nullptr : counted(__libc_memalign(alignment, bytes));
}

void* aligned_alloc(std::size_t alignment, std::size_t bytes) noexcept {
  return memalign(alignment, bytes);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t bytes) noexcept {
  void* const made = memalign(alignment, bytes);
  if (made == nullptr) return ENOMEM;
  *block = made;
  return 0;
}

void free(void* block) noexcept {
  if (block != nullptr) --blocks;
  __libc_free(block);
}

}  // extern "C"
#pragma GCC visibility pop

#endif
