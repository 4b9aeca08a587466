// What may be read in this process: a pack's records are followed only where that is no risk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace packcheck {

// The mappings of this process as they were when the object was made.
class AddressSpace {
 public:
  AddressSpace();  // address_space_posix.cpp, address_space_windows.cpp.

  bool readable(const void* address, std::size_t bytes) const;
  bool executable(const void* address) const;

  // Whether a record of this type stands at the address, as far as can be told.
  template <class Record>
  bool holds(const Record* record) const {
    return reinterpret_cast<std::uintptr_t>(record) % alignof(Record) == 0 &&
           readable(record, sizeof(Record));
  }

  // The NUL-terminated text at the address; nothing when it cannot be read or has no end.
  std::optional<std::string> text_at(const char* address) const;

 private:
  struct Mapping {
    std::uintptr_t start, end;
    bool readable, executable;
  };

  const Mapping* mapping_of(const void* address) const;

  std::vector<Mapping> mappings_;
};

}  // namespace packcheck
