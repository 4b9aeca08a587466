// Blocks between guards: bytes in front and behind that nobody may write. A freed block is filled
// with a pattern and rests for a while, so that writing to it shows when it is used again.
#pragma once

#include <cstddef>
#include <optional>

namespace packcheck::guards {

// Null when there is no memory. `freed_was_written` is set when the space that the block takes was
// written to after it had been freed.
void* allocate(std::size_t size, bool& freed_was_written);

bool owns(const void* address);
// The size of the live block that starts at `address`; nothing when there is none.
std::optional<std::size_t> block_size(const void* address);
bool guards_intact(const void* block);
void release(void* block);

}  // namespace packcheck::guards
