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

bool active = false;
int asked_for = 0;
int nth_to_fail = 0;
Failing how = Failing::once;
std::size_t largest_block = SIZE_MAX;
bool failed = false;
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

AllocationFaults::AllocationFaults(int nth, Failing failing, std::size_t largest) {
  asked_for = 0;
  nth_to_fail = nth;
  how = failing;
  largest_block = largest;
  failed = false;
  active = true;
}

AllocationFaults::~AllocationFaults() {
  active = false;
}

int AllocationFaults::count() const {
  return asked_for;
}

bool AllocationFaults::happened() const {
  return failed;
}

bool allocation_fails() {
  return allocation_fails(0);
}

bool allocation_fails(std::size_t bytes) {
  if (!active) return false;
  ++asked_for;
  const bool fails =
      bytes > largest_block ||
      (nth_to_fail != 0 &&
       (asked_for == nth_to_fail || (how == Failing::from_then_on && asked_for > nth_to_fail)));
  failed = failed || fails;
  return fails;
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
