// The values of a host: their records, kept below 4 GiB so that a nested element can hold an
// address, and the arrays and texts that they own.
//
// A store owns every value made through it. The values that the host still reaches are named to
// `collect`, which reclaims the others.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "pack/host_interface.hpp"

namespace efi {

#pragma GCC visibility push(default)

// A function value. What `body` means is the application's business.
struct aFunction : Anyval {
  std::int32_t host_word;  // Not used.
  void* body;              // The application's; not freed by the store.
};

// Whether an element has the pattern of a nested one.
inline bool is_nested_element(double element) {
  return (std::bit_cast<std::uint64_t>(element) >> 32) == kNestedMark;
}
// The value that a nested element holds, and the element that holds a value.
Anyval* nested_value(double element);
double nested_element(const Anyval* value);

// The NaN that stands where a pack has yet to write.
inline constexpr std::uint64_t kUnwrittenBits = 0x7FF8'0BAD'F00D'0BAD;

// The allocator of a context; the services of this library ask for one. Not for several threads at
// once.
class Store final : public IqlAllocator {
 public:
  // As many as a joined value can have.
  static constexpr int kMostParts = 4;

  Store() = default;
  ~Store();
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  // New values; null when there is no memory. new_matrix adopts the arrays, which come from
  // ::operator new, only when it succeeds, and `bytes` is rows * cols * 8; new_string copies the
  // text; new_error refers to its message and value, which are values of this store or outlive it.
  aComplex* new_scalar(double re, double im);
  aMatrix* new_matrix(int rows, int cols, double* re, double* im, unsigned bytes);
  aString* new_string(const char* text);
  aError* new_error(const aString* message, int mark, int arg, Anyval* value);
  aFunction* new_function(void* body);

  // Makes `joined` remember the values of which it was made. False when there is no memory.
  bool set_parts(aMatrix* joined, std::span<aMatrix* const> parts);
  // The values of which `value` was joined; empty for any other value.
  std::span<aMatrix* const> parts(const Anyval* value) const;

  // Whether `value` is a live value of this store.
  bool owns(const Anyval* value) const;

  // The number of live values, which is also the mark that separates the values made so far from
  // those made later.
  std::size_t size() const { return live_.size(); }

  // Reclaims the values made since `since` that none of the roots reaches. Older values do not
  // refer to later ones.
  void collect(std::span<Anyval* const> roots, std::size_t since = 0);

  // Reclaims `value` if it is the newest of all.
  void drop_newest(const Anyval* value);

  // For tests: asked before each value is made; true means that there is no memory for it.
  bool (*refuse)() = nullptr;

  void operation1() override {}
  void operation2() override {}
  void operation3() override {}
  void operation4() override {}
  void operation5() override {}
  void operation6() override {}
  void operation7() override {}
  void operation8() override {}
  void new_scalar(aComplex** out) override;

 private:
  struct Header;
  struct PartList;
  struct Slot;

  Slot* take(std::int32_t kind);
  Slot* free_slot();
  bool add_chunk();
  void reclaim(Slot* slot);
  void mark(const Anyval* value, std::size_t since);
  void mark_children(Slot* slot, std::size_t since);
  static Slot* slot_of(const Anyval* value);

  std::vector<Slot*> chunks_;
  std::vector<Slot*> live_;     // In the order in which they were made.
  std::vector<Slot*> pending_;  // Reached, but their references are not followed yet.
  Slot* free_ = nullptr;
  std::size_t touched_ = 0;  // Slots of the newest chunk that have ever been used.
};

#pragma GCC visibility pop

}  // namespace efi
