// Memory for the matrices of checks. Large blocks stay with the thread for its next check: the
// system takes longer to hand out fresh pages than a check takes to use them.
#pragma once

#include <cstddef>

namespace audit {

// A block of at least `bytes`; throws std::bad_alloc. Give it back with the same number.
void* take_scratch(std::size_t bytes);
void give_back_scratch(void* block, std::size_t bytes) noexcept;

// The allocator of vectors that live no longer than a check.
template <class T>
struct Scratch {
  using value_type = T;

  Scratch() = default;
  template <class U>
  Scratch(const Scratch<U>&) {}  // NOLINT: containers ask for the conversion.

  T* allocate(std::size_t n) { return static_cast<T*>(take_scratch(n * sizeof(T))); }
  void deallocate(T* p, std::size_t n) noexcept { give_back_scratch(p, n * sizeof(T)); }
  template <class U>
  bool operator==(const Scratch<U>&) const {
    return true;
  }
};

}  // namespace audit
