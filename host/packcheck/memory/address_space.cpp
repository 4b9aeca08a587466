#include "host/packcheck/memory/address_space.hpp"

#include <cstring>

namespace packcheck {

const AddressSpace::Mapping* AddressSpace::mapping_of(const void* address) const {
  const auto at = reinterpret_cast<std::uintptr_t>(address);
  for (const Mapping& mapping : mappings_)
    if (at >= mapping.start && at < mapping.end) return &mapping;
  return nullptr;
}

bool AddressSpace::readable(const void* address, std::size_t bytes) const {
  const auto end = reinterpret_cast<std::uintptr_t>(address) + bytes;
  auto at = reinterpret_cast<std::uintptr_t>(address);
  while (at < end) {
    const Mapping* const mapping = mapping_of(reinterpret_cast<const void*>(at));
    if (mapping == nullptr || !mapping->readable) return false;
    at = mapping->end;
  }
  return true;
}

bool AddressSpace::executable(const void* address) const {
  const Mapping* const mapping = mapping_of(address);
  return mapping != nullptr && mapping->executable;
}

std::optional<std::string> AddressSpace::text_at(const char* address) const {
  const Mapping* const mapping = mapping_of(address);
  if (mapping == nullptr || !mapping->readable) return std::nullopt;
  const std::size_t room = mapping->end - reinterpret_cast<std::uintptr_t>(address);
  const std::size_t length = strnlen(address, room);
  if (length == room) return std::nullopt;
  return std::string(address, length);
}

}  // namespace packcheck
