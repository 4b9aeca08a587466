#include "host/packcheck/heap.hpp"

#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

#include "host/packcheck/fences.hpp"
#include "host/packcheck/malloc_count.hpp"

namespace packcheck::heap {

namespace {

// A larger block is refused: no function of a pack needs one for the arguments that it is given
// here, and a size that makes no sense shall not bring the machine down.
constexpr std::size_t kLargestBlock = std::size_t{256} << 20;

// The blocks that are freed before one of their size is used again.
constexpr std::size_t kQuarantine = 32;

// What a freed block is filled with, up to this many bytes.
constexpr std::uint64_t kFreedPattern = 0x7FF8FEEEFEEEFEEEu;
constexpr std::size_t kFreedFill = 4096;

constexpr unsigned char kGuard = 0xFD;
constexpr std::size_t kGuardBytes = 32;

enum class State : std::uint64_t {
  none = 0,
  live = 0x4C49564542304C4Bu,
  freed = 0x4652454544424C4Bu
};

// In front of the bytes of a guarded block. Another guard is behind them.
struct alignas(16) Header {
  Header* next;  // In the queue of freed blocks.
  std::size_t size;
  State state;
  unsigned char front[kGuardBytes];

  char* bytes() { return reinterpret_cast<char*>(this + 1); }
};
static_assert(sizeof(Header) % 16 == 0);

// Freed blocks of one power of two, oldest first.
struct Queue {
  Header* first;
  Header* last;
  std::size_t length;
};

char* arena = nullptr;
std::size_t arena_size = 0;
std::size_t arena_used = 0;
Queue queues[64];

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

// As much address space as there is to have; pages come with use.
void map_arena() {
  constexpr std::size_t kMost = sizeof(void*) == 8 ? std::size_t{1} << 34 : std::size_t{1} << 29;
  for (arena_size = kMost; arena_size >= kMost / 256; arena_size /= 2) {
    void* const mapped = mmap(nullptr, arena_size, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapped != MAP_FAILED) {
      arena = static_cast<char*>(mapped);
      return;
    }
  }
  arena_size = 0;
}

bool in_arena(const void* address) {
  const auto offset =
      reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(arena);
  return offset < arena_size;
}

// The header of the block that starts at `address`, live or freed; null if none does.
Header* header_at(const void* address) {
  const auto at = reinterpret_cast<std::uintptr_t>(address);
  if (!in_arena(address) || at % 16 != 0 || !in_arena(reinterpret_cast<char*>(at - sizeof(Header))))
    return nullptr;
  auto* const header = reinterpret_cast<Header*>(at - sizeof(Header));
  return header->state == State::live || header->state == State::freed ? header : nullptr;
}

void fill(void* bytes, std::size_t size, std::uint64_t pattern) {
  auto* const to = static_cast<char*>(bytes);
  for (std::size_t k = 0; k < size; k += sizeof pattern)
    std::memcpy(to + k, &pattern, std::min(sizeof pattern, size - k));
}

bool holds(const void* bytes, std::size_t size, std::uint64_t pattern) {
  auto* const at = static_cast<const char*>(bytes);
  for (std::size_t k = 0; k < size; k += sizeof pattern)
    if (std::memcmp(at + k, &pattern, std::min(sizeof pattern, size - k)) != 0) return false;
  return true;
}

bool is_guard(const void* bytes) {
  auto* const at = static_cast<const unsigned char*>(bytes);
  return std::all_of(at, at + kGuardBytes, [](unsigned char c) { return c == kGuard; });
}

bool guards_intact(Header* header) {
  return is_guard(header->front) && is_guard(header->bytes() + header->size);
}

std::size_t class_of(std::size_t size) {
  return static_cast<std::size_t>(std::bit_width(sizeof(Header) + size + kGuardBytes - 1));
}

// The oldest freed block of the queue when enough others are behind it, else new space.
Header* take_space(std::size_t size_class) {
  Queue& queue = queues[size_class];
  if (queue.length > kQuarantine) {
    Header* const oldest = queue.first;
    queue.first = oldest->next;
    --queue.length;
    if (!holds(oldest->bytes(), std::min(oldest->size, kFreedFill), kFreedPattern))
      complain("wrote to a block that was freed");
    return oldest;
  }
  if (arena == nullptr) map_arena();
  const std::size_t bytes = std::size_t{1} << size_class;
  if (arena_size - arena_used < bytes) return nullptr;
  arena_used += bytes;
  return reinterpret_cast<Header*>(arena + arena_used - bytes);
}

void* allocate_guarded(std::size_t size) {
  Header* const header = take_space(class_of(size));
  if (header == nullptr) return nullptr;
  header->next = nullptr;
  header->size = size;
  header->state = State::live;
  std::memset(header->front, kGuard, kGuardBytes);
  std::memset(header->bytes() + size, kGuard, kGuardBytes);
  return header->bytes();
}

void* allocate(std::size_t size) {
  const Lock lock;
  if (refuses() || size > kLargestBlock) return nullptr;
  const int kept_errno = errno;
  void* block = nullptr;
  if (placement != Placement::guarded) {
    const auto side =
        placement == Placement::fenced_behind ? fences::Side::behind : fences::Side::before;
    block = fences::allocate(size, side, exactly);
  }
  if (block == nullptr) block = allocate_guarded(size);
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

void release_guarded(Header* header) {
  if (!guards_intact(header)) complain("wrote outside of a block");
  header->state = State::freed;
  header->next = nullptr;
  fill(header->bytes(), std::min(header->size, kFreedFill), kFreedPattern);
  Queue& queue = queues[class_of(header->size)];
  if (queue.length++ == 0)
    queue.first = header;
  else
    queue.last->next = header;
  queue.last = header;
}

void release_fenced(void* block) {
  if (!fences::guards_intact(block)) complain("wrote outside of a block");
  fences::release(block);
}

void release(void* address) {
  if (address == nullptr) return;
  const Lock lock;
  const auto size = block_size(address);
  if (!size) {
    // Hosts free what malloc gave in this way, too.
    const bool known = in_arena(address) || fences::owns(address);
    if (known)
      complain(header_at(address) != nullptr || fences::owns(address)
                   ? "freed a block twice"
                   : "freed what is not the start of a block");
    else
      std::free(address);
    return;
  }
  const int kept_errno = errno;
  --live_blocks;
  live_bytes -= static_cast<std::int64_t>(*size);
  if (fences::owns(address))
    release_fenced(address);
  else
    release_guarded(header_at(address));
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
  if (fences::owns(address)) return fences::block_size(address);
  const Header* const header = header_at(address);
  if (header == nullptr || header->state != State::live) return std::nullopt;
  return header->size;
}

bool guards_intact(const void* address) {
  return fences::owns(address) ? fences::guards_intact(address) : guards_intact(header_at(address));
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
