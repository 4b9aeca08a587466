#include <windows.h>

#include "host/packcheck/memory/pages.hpp"

namespace packcheck {

void* reserve_pages(std::size_t bytes) {
  return VirtualAlloc(nullptr, bytes, MEM_RESERVE, PAGE_NOACCESS);
}

bool open_pages(void* start, std::size_t bytes) {
  return VirtualAlloc(start, bytes, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}

void close_pages(void* start, std::size_t bytes) {
  VirtualFree(start, bytes, MEM_DECOMMIT);
}

}  // namespace packcheck
