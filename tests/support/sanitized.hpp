// Whether this build has sanitizers: they want time, memory, stack and addresses of their own.
#pragma once

namespace test {

#if defined(MATRIX_SANITIZED)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

}  // namespace test
