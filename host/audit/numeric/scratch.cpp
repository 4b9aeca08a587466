#include "host/audit/numeric/scratch.hpp"

#include <algorithm>
#include <new>
#include <vector>

namespace audit {

namespace {

// Smaller blocks come from the heap's own lists; with larger ones a call takes far longer than
// pages.
constexpr std::size_t kSmallest = std::size_t{1} << 14, kLargest = std::size_t{1} << 22;
// At most 20 MB stay with a thread.
constexpr std::size_t kMostBlocks = 4;

// Blocks are of whole sizes, so that those of one check fit the next of about the same order.
std::size_t whole_size(std::size_t bytes) {
  std::size_t size = kSmallest;
  while (size < bytes) size += size / 2;
  return size;
}

struct Block {
  void* memory;
  std::size_t bytes;
};

struct Pool {
  std::vector<Block> blocks;

  Pool() { blocks.reserve(kMostBlocks); }
  ~Pool() {
    for (const Block& block : blocks) ::operator delete(block.memory);
  }
};

Pool& pool() {
  thread_local Pool blocks;
  return blocks;
}

}  // namespace

void* take_scratch(std::size_t bytes) {
  if (bytes < kSmallest || bytes > kLargest) return ::operator new(bytes);
  const std::size_t size = whole_size(bytes);
  auto& blocks = pool().blocks;
  const auto found = std::find_if(blocks.begin(), blocks.end(),
                                  [&](const Block& block) { return block.bytes == size; });
  if (found == blocks.end()) return ::operator new(size);
  void* const memory = found->memory;
  blocks.erase(found);
  return memory;
}

void give_back_scratch(void* block, std::size_t bytes) noexcept {
  if (bytes < kSmallest || bytes > kLargest) return ::operator delete(block);
  auto& blocks = pool().blocks;
  if (blocks.size() == kMostBlocks) {
    ::operator delete(blocks.front().memory);
    blocks.erase(blocks.begin());
  }
  blocks.push_back({block, whole_size(bytes)});
}

}  // namespace audit
