// Whether this build has sanitizers: they want time, memory, stack and addresses of their own.
#pragma once

namespace test {

extern const bool kSanitized;  // Told as the program runs: tests are compiled once for all builds.

}  // namespace test
