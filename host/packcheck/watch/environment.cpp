#include "host/packcheck/watch/environment.hpp"

#include <fmt/format.h>

namespace packcheck {

std::vector<std::string> differences(const Environment& before, const Environment& after) {
  std::vector<std::string> found;
  auto things = before.things;
  things.insert(after.things.begin(), after.things.end());
  const auto state = [](const auto& all, const std::string& thing) {
    const auto at = all.find(thing);
    return at == all.end() ? std::string("nothing") : at->second;
  };
  for (const auto& [thing, any] : things) {
    const std::string was = state(before.things, thing);
    if (const std::string is = state(after.things, thing); is != was)
      found.push_back(fmt::format("changed {} (to {}, from {})", thing, is, was));
  }
  if (const std::string what = fp_difference(before.fp, after.fp); !what.empty())
    found.push_back("changed " + what);
  return found;
}

}  // namespace packcheck
