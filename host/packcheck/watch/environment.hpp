// What a process has besides its memory: the things that a pack shares with its host and has no
// business with.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "host/packcheck/watch/fp_state.hpp"

namespace packcheck {

// Descriptors from here on are the checker's own: no pack would use them by accident.
inline constexpr int kFirstOwnDescriptor = 200;

// The things by name, each in a form that tells differences; and the floating-point control.
struct Environment {
  std::map<std::string, std::string> things;
  FpState fp;
};

Environment environment();  // environment_posix.cpp, environment_windows.cpp.

// What is different, one text for each thing: "changed the locale (C, was C.UTF-8)".
std::vector<std::string> differences(const Environment& before, const Environment& after);

}  // namespace packcheck
