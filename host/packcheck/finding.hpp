// What the checker has to say.
#pragma once

#include <string>

namespace packcheck {

// A promise that a pack did not keep. Findings of one check, function and rule are one, told by the
// first call at which it came up.
struct Finding {
  std::string check = {};
  std::string function = {};   // Empty for a finding about the pack as a whole.
  std::string rule = {};       // A word for the promise: findings are counted by it.
  std::string message = {};    // What was seen.
  std::string arguments = {};  // The call, in words; empty where there was none.
  int call = -1;               // Its place in the list of calls; -1 where there was none.
  int times = 1;
};

}  // namespace packcheck
