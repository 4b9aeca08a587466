// Whether this build has sanitizers: they want time, memory, stack and addresses of their own.
#pragma once

namespace test {

extern const bool kSanitized;  // Told as the program runs: tests are compiled once for all builds.

// How many of `many` trials a test makes: with sanitizers, where each takes several times as long,
// a few.
inline int trials(int many) {
  return kSanitized ? many / 5 : many;
}

}  // namespace test
