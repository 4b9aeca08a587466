// Blocks that lie against pages which cannot be touched: an access beyond the block's end (or in
// front of its start) is a fault at once, and so is one to a block that was freed.
#pragma once

#include <cstddef>

#include "host/packcheck/memory/heap.hpp"

namespace packcheck::fences {

enum class Side { behind, before };

// Null when the region is full. With `exactly`, a block fenced behind ends at the page whatever its
// size; else it starts at a multiple of 16, and the few bytes to the page are guarded.
void* allocate(std::size_t size, Side side, bool exactly);

bool owns(const void* address);
// The size of the live block that starts at `address`; nothing when there is none.
std::optional<std::size_t> block_size(const void* address);
// Whether the bytes that share the block's pages are as they were.
bool guards_intact(const void* address);
void release(void* address);

heap::Place locate(const void* address);

}  // namespace packcheck::fences
