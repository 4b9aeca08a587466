// Pages of this process: pages_posix.cpp, pages_windows.cpp.
#pragma once

#include <cstddef>

namespace packcheck {

// Address space that cannot be touched and takes no memory; null when there is none.
void* reserve_pages(std::size_t bytes);
// Lets whole pages of it be used. False when there is no memory.
bool open_pages(void* start, std::size_t bytes);
// The other way; what they held is gone.
void close_pages(void* start, std::size_t bytes);

}  // namespace packcheck
