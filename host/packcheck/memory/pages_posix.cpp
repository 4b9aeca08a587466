#include <sys/mman.h>

#include "host/packcheck/memory/pages.hpp"

namespace packcheck {

void* reserve_pages(std::size_t bytes) {
  void* const mapped =
      mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  return mapped == MAP_FAILED ? nullptr : mapped;
}

bool open_pages(void* start, std::size_t bytes) {
  return mprotect(start, bytes, PROT_READ | PROT_WRITE) == 0;
}

void close_pages(void* start, std::size_t bytes) {
  mprotect(start, bytes, PROT_NONE);
  madvise(start, bytes, MADV_DONTNEED);
}

}  // namespace packcheck
