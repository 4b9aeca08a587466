#include "tests/support/allocation_faults.hpp"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "host/efiutils/store.hpp"

namespace test {

namespace {

// Each thread has faults of its own.
thread_local AllocationFaults* in_force = nullptr;
std::atomic<long> live = 0;

// What stands before an allocation: its size, and a pattern that nobody writes to and that stands
// behind it as well. A sanitizer sees more when there is nothing of this kind.
#if defined(MATRIX_SANITIZED)
constexpr bool kFenced = false;
#else
constexpr bool kFenced = true;
#endif
struct Fence {
  std::uint64_t bytes;
  std::uint64_t pattern;
};
constexpr std::uint64_t kPattern = 0xFE11CEFE11CEFE11;
constexpr std::size_t kBefore = kFenced ? sizeof(Fence) : 0;
constexpr std::size_t kBehind = kFenced ? sizeof kPattern : 0;

// Huge arrays are left to the system: some tests ask for more than there is.
constexpr std::size_t kMostFilled = std::size_t{1} << 28;

void* allocate(std::size_t bytes) {
  if (allocation_fails(bytes)) return nullptr;
  auto* const whole =
      static_cast<char*>(std::malloc(kBefore + std::max<std::size_t>(bytes, 1) + kBehind));
  if (whole == nullptr) return nullptr;
  char* const memory = whole + kBefore;
  for (std::size_t at = 0; at + 8 <= bytes && bytes <= kMostFilled; at += 8)
    std::memcpy(memory + at, &efi::kUnwrittenBits, sizeof efi::kUnwrittenBits);
  if (kFenced) {
    const Fence fence = {bytes, kPattern};
    std::memcpy(whole, &fence, sizeof fence);
    std::memcpy(memory + bytes, &kPattern, sizeof kPattern);
  }
  ++live;
  return memory;
}

// Ends the program when the fences of an allocation are broken, and breaks them.
void check_fences(char* memory) {
  Fence fence;
  std::memcpy(&fence, memory - sizeof fence, sizeof fence);
  std::uint64_t behind = 0;
  if (fence.pattern == kPattern) std::memcpy(&behind, memory + fence.bytes, sizeof behind);
  if (behind != kPattern) {
    std::fputs("an array was written beyond its ends, or freed twice\n", stderr);
    std::abort();
  }
  std::memset(memory - sizeof fence, 0, sizeof fence);
}

void deallocate(void* p) {
  if (p == nullptr) return;
  if (kFenced) check_fences(static_cast<char*>(p));
  --live;
  std::free(static_cast<char*>(p) - kBefore);
}

void* allocate_or_throw(std::size_t bytes) {
  if (void* p = allocate(bytes)) return p;
  throw std::bad_alloc();
}

}  // namespace

AllocationFaults::AllocationFaults(int nth, Failing failing, std::size_t largest)
    : nth_(nth), failing_(failing), largest_(largest), outer_(in_force) {
  in_force = this;
}

AllocationFaults::~AllocationFaults() {
  in_force = outer_;
}

bool AllocationFaults::next_fails(std::size_t bytes) {
  ++count_;
  const bool fails =
      bytes > largest_ ||
      (nth_ != 0 && (count_ == nth_ || (failing_ == Failing::from_then_on && count_ > nth_)));
  happened_ = happened_ || fails;
  return fails;
}

bool allocation_fails() {
  return allocation_fails(0);
}

bool allocation_fails(std::size_t bytes) {
  return in_force != nullptr && in_force->next_fails(bytes);
}

long live_blocks() {
  return live;
}

}  // namespace test

void* operator new(std::size_t bytes) {
  return test::allocate_or_throw(bytes);
}
void* operator new[](std::size_t bytes) {
  return test::allocate_or_throw(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return test::allocate(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  return test::allocate(bytes);
}
void operator delete(void* p) noexcept {
  test::deallocate(p);
}
void operator delete[](void* p) noexcept {
  test::deallocate(p);
}
void operator delete(void* p, std::size_t) noexcept {
  test::deallocate(p);
}
void operator delete[](void* p, std::size_t) noexcept {
  test::deallocate(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
  test::deallocate(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
  test::deallocate(p);
}
