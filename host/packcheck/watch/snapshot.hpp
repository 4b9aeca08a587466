// The bits of values: of arguments, to see whether a call left them alone, and of results, to see
// whether a call gives the same ones again.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/efiutils/store.hpp"
#include "pack/host_interface.hpp"

namespace packcheck {

// A value as it was: its record, its arrays and texts, and those of the values that it holds.
class Snapshot {
 public:
  // The value is a well-formed one of the store's, or a record of the host's own.
  explicit Snapshot(const Anyval* value);

  // What was done to it since, in words that the value's name follows ("changed the record of");
  // empty if nothing. The flag by which hosts know an array that is held as a nested value may have
  // been set: a pack that hands such an array on in another matrix does that.
  std::string change() const;

 private:
  struct Piece {
    const char* what;
    const void* address;
    std::vector<unsigned char> bytes;
  };

  struct NestedRecord {
    const aMatrix* array;
    aMatrix record;
  };

  void keep(const char* what, const void* address, std::size_t bytes);
  void take(const Anyval* value, int depth);
  void take_matrix(const aMatrix* matrix, int depth);
  void take_part(const char* what, const aMatrix* matrix, const double* part, int depth);

  std::vector<Piece> pieces_;
  std::vector<const void*> arrays_;
  std::vector<NestedRecord> nested_;
};

// A value's meaning: kinds, shapes, numbers bit for bit and texts, no addresses. Two calls that
// give the same values give the same words.
std::vector<std::uint64_t> meaning(const efi::Store& store, const Anyval* value);

}  // namespace packcheck
