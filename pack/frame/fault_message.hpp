// What the user reads about a processor fault.
#pragma once

#include <cstdint>

namespace matrix_pack {

// The words for a structured-exception code: for the user where the guard unmasks the fault, the
// constant's name for every other code.
const char* fault_message(std::uint32_t code);

}  // namespace matrix_pack
