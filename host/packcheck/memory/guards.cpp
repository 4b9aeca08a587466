#include "host/packcheck/memory/guards.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "host/packcheck/memory/pages.hpp"

namespace packcheck::guards {

namespace {

// The blocks that are freed before the space of one is used again.
constexpr std::size_t kResting = 32;

// What a freed block is filled with, up to this many bytes.
constexpr unsigned char kFreed = 0xFE;
constexpr std::size_t kFreedFill = 4096;

constexpr unsigned char kGuard = 0xFD;
constexpr std::size_t kGuardBytes = 32;

enum class State : std::uint64_t {
  none = 0,
  live = 0x4C49564542304C4Bu,
  freed = 0x4652454544424C4Bu
};

// In front of the bytes of a block. Another guard is behind them.
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
std::size_t arena_open = 0;
Queue queues[64];

// Reserves as much address space as can be had.
void map_arena() {
  constexpr std::size_t kMost = sizeof(void*) == 8 ? std::size_t{1} << 34 : std::size_t{1} << 29;
  for (arena_size = kMost; arena_size >= kMost / 256; arena_size /= 2) {
    arena = static_cast<char*>(reserve_pages(arena_size));
    if (arena != nullptr) return;
  }
  arena_size = 0;
}

Header* header_of(const void* block) {
  return reinterpret_cast<Header*>(reinterpret_cast<std::uintptr_t>(block) - sizeof(Header));
}

bool all_are(const void* bytes, std::size_t count, unsigned char wanted) {
  auto* const at = static_cast<const unsigned char*>(bytes);
  return std::all_of(at, at + count, [=](unsigned char c) { return c == wanted; });
}

std::size_t class_of(std::size_t size) {
  return static_cast<std::size_t>(std::bit_width(sizeof(Header) + size + kGuardBytes - 1));
}

// Lets the first `bytes` of it be used.
bool open_arena(std::size_t bytes) {
  constexpr std::size_t kStep = std::size_t{1} << 24;
  if (bytes <= arena_open) return true;
  const std::size_t open = std::min((bytes + kStep - 1) / kStep * kStep, arena_size);
  if (!open_pages(arena + arena_open, open - arena_open)) return false;
  arena_open = open;
  return true;
}

Header* new_space(std::size_t size_class) {
  if (arena == nullptr) map_arena();
  const std::size_t bytes = std::size_t{1} << size_class;
  if (arena_size - arena_used < bytes || !open_arena(arena_used + bytes)) return nullptr;
  arena_used += bytes;
  return reinterpret_cast<Header*>(arena + arena_used - bytes);
}

Header* take_first(Queue& queue) {
  Header* const first = queue.first;
  queue.first = first->next;
  --queue.length;
  return first;
}

}  // namespace

void* allocate(std::size_t size, bool& freed_was_written) {
  const std::size_t size_class = class_of(size);
  Header* header;
  if (queues[size_class].length > kResting) {
    header = take_first(queues[size_class]);
    freed_was_written = !all_are(header->bytes(), std::min(header->size, kFreedFill), kFreed);
  } else {
    header = new_space(size_class);
    if (header == nullptr) return nullptr;
  }
  header->next = nullptr;
  header->size = size;
  header->state = State::live;
  std::memset(header->front, kGuard, kGuardBytes);
  std::memset(header->bytes() + size, kGuard, kGuardBytes);
  return header->bytes();
}

bool owns(const void* address) {
  const auto offset =
      reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(arena);
  return offset < arena_size;
}

std::optional<std::size_t> block_size(const void* address) {
  const bool possible = reinterpret_cast<std::uintptr_t>(address) % 16 == 0 && owns(address) &&
                        owns(header_of(address));
  if (!possible || header_of(address)->state != State::live) return std::nullopt;
  return header_of(address)->size;
}

bool guards_intact(const void* block) {
  Header* const header = header_of(block);
  return all_are(header->front, kGuardBytes, kGuard) &&
         all_are(header->bytes() + header->size, kGuardBytes, kGuard);
}

void release(void* block) {
  Header* const header = header_of(block);
  header->state = State::freed;
  header->next = nullptr;
  std::memset(header->bytes(), kFreed, std::min(header->size, kFreedFill));
  Queue& queue = queues[class_of(header->size)];
  if (queue.length++ == 0)
    queue.first = header;
  else
    queue.last->next = header;
  queue.last = header;
}

}  // namespace packcheck::guards
