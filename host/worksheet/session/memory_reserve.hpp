// A little memory kept back, so that there is some to say that there is none.
#pragma once

namespace worksheet {

// Keeps the reserve, or keeps it anew after it was spent. Whoever runs out of memory from now on
// gets std::bad_alloc, and the reserve is free for what follows.
void keep_memory_reserve();

}  // namespace worksheet
