#include "host/packcheck/memory/heap.hpp"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

#include "host/packcheck/memory/fences.hpp"
#include "host/packcheck/memory/guards.hpp"
#include "host/packcheck/memory/malloc_count.hpp"

namespace packcheck::heap {

namespace {

// A larger block is refused: no function of a pack needs one for the arguments that it is given
// here, and a size that makes no sense shall not bring the machine down.
constexpr std::size_t kLargestBlock = std::size_t{256} << 20;

std::int64_t live_blocks = 0;
std::int64_t live_bytes = 0;
Placement placement = Placement::guarded;
bool exactly = false;
std::uint64_t new_pattern = kMarkedNan;
const char* complaint = nullptr;

struct {
  bool active;
  int nth;
  Failing how;
  int asked;
  bool happened;
} failing = {};

std::atomic_flag busy = ATOMIC_FLAG_INIT;
struct Lock {
  Lock() {
    while (busy.test_and_set(std::memory_order_acquire)) {
    }
  }
  ~Lock() { busy.clear(std::memory_order_release); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;
};

void complain(const char* what) {
  if (complaint == nullptr) complaint = what;
}

void fill(void* bytes, std::size_t size, std::uint64_t pattern) {
  auto* const to = static_cast<char*>(bytes);
  for (std::size_t k = 0; k < size; k += sizeof pattern)
    std::memcpy(to + k, &pattern, std::min(sizeof pattern, size - k));
}

// Where the placement says, or else, when that is full, between guards.
void* take_block(std::size_t size) {
  if (placement != Placement::guarded) {
    const auto side =
        placement == Placement::fenced_behind ? fences::Side::behind : fences::Side::before;
    if (void* const block = fences::allocate(size, side, exactly)) return block;
  }
  bool freed_was_written = false;
  void* const block = guards::allocate(size, freed_was_written);
  if (freed_was_written) complain("wrote to a block that was freed");
  return block;
}

void* allocate(std::size_t size) {
  const Lock lock;
  if (refuses() || size > kLargestBlock) return nullptr;
  const int kept_errno = errno;
  void* const block = take_block(size);
  errno = kept_errno;
  if (block == nullptr) return nullptr;
  ++live_blocks;
  live_bytes += static_cast<std::int64_t>(size);
  fill(block, size, new_pattern);
  return block;
}

void* allocate_or_throw(std::size_t size) {
  if (void* const block = allocate(size)) return block;
  throw std::bad_alloc();
}

void release(void* address) {
  if (address == nullptr) return;
  const Lock lock;
  const bool fenced = fences::owns(address);
  const auto size = block_size(address);
  if (!size) {
    if (fenced || guards::owns(address))
      complain("freed a block twice, or what is no block");
    else
      std::free(address);  // Hosts free in this way what malloc gave, too.
    return;
  }
  if (!guards_intact(address)) complain("wrote outside of a block");
  const int kept_errno = errno;
  --live_blocks;
  live_bytes -= static_cast<std::int64_t>(*size);
  (fenced ? fences::release : guards::release)(address);
  errno = kept_errno;
}

}  // namespace

Usage usage() {
  return {live_blocks, live_bytes, malloc_count::held()};
}

void fail(int nth, Failing how) {
  failing = {true, nth, how, 0, false};
}

bool end_failing() {
  failing.active = false;
  return failing.happened;
}

bool refuses() {
  if (!failing.active) return false;
  ++failing.asked;
  const bool refused =
      failing.nth != 0 && (failing.asked == failing.nth ||
                           (failing.how == Failing::from_then_on && failing.asked > failing.nth));
  failing.happened = failing.happened || refused;
  return refused;
}

void place(Placement new_placement) {
  placement = new_placement;
}

void place_exactly(bool new_exactly) {
  exactly = new_exactly;
}

void fill_with(std::uint64_t pattern) {
  new_pattern = pattern;
}

std::optional<std::size_t> block_size(const void* address) {
  return (fences::owns(address) ? fences::block_size : guards::block_size)(address);
}

bool guards_intact(const void* block) {
  return (fences::owns(block) ? fences::guards_intact : guards::guards_intact)(block);
}

const char* take_complaint() {
  return std::exchange(complaint, nullptr);
}

Place locate(const void* address) {
  return fences::owns(address) ? fences::locate(address) : Place{Place::elsewhere, 0, 0};
}

}  // namespace packcheck::heap

// The executable's own, for itself and for every library in the process.

void* operator new(std::size_t bytes) {
  return packcheck::heap::allocate_or_throw(bytes);
}
void* operator new[](std::size_t bytes) {
  return packcheck::heap::allocate_or_throw(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return packcheck::heap::allocate(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  return packcheck::heap::allocate(bytes);
}
void operator delete(void* p) noexcept {
  packcheck::heap::release(p);
}
void operator delete[](void* p) noexcept {
  packcheck::heap::release(p);
}
void operator delete(void* p, std::size_t) noexcept {
  packcheck::heap::release(p);
}
void operator delete[](void* p, std::size_t) noexcept {
  packcheck::heap::release(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
  packcheck::heap::release(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
  packcheck::heap::release(p);
}
