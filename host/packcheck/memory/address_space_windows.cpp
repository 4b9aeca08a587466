#include <windows.h>

#include "host/packcheck/memory/address_space.hpp"

namespace packcheck {

AddressSpace::AddressSpace() {
  constexpr DWORD kExecutable =
      PAGE_EXECUTE | PAGE_EXECUTE_READ | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
  constexpr DWORD kReadable = PAGE_READONLY | PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READ |
                              PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
  MEMORY_BASIC_INFORMATION region;
  std::uintptr_t at = 0;
  while (VirtualQuery(reinterpret_cast<const void*>(at), &region, sizeof region) != 0) {
    const auto start = reinterpret_cast<std::uintptr_t>(region.BaseAddress);
    const std::uintptr_t end = start + region.RegionSize;
    if (region.State == MEM_COMMIT && (region.Protect & PAGE_GUARD) == 0)
      mappings_.push_back(
          {start, end, (region.Protect & kReadable) != 0, (region.Protect & kExecutable) != 0});
    if (end <= at) break;
    at = end;
  }
}

}  // namespace packcheck
