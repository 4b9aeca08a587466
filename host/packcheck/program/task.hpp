// A piece of work on a pack, as it goes to the process that does it.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "host/packcheck/checks/session.hpp"

namespace packcheck {

// The names of the work that finds out what a pack has (survey.hpp); other work has the name of the
// check that it is.
inline constexpr const char* kListFunctions = "list the functions";
inline constexpr const char* kFindBase = "find arguments";

struct Task {
  std::string work;
  Options options;
  std::vector<Target> at_hand;  // The function; none in work on the pack as a whole,
  std::vector<Target> targets;  // which gets those that it may call.
  std::set<int> skipped;
  int first_call;
};

// For a process that is to do it. It is no text for people, and may hold any byte.
std::string bytes_of(const Task& task);

// Does what such bytes say, and tells of it through the channel.
void perform(const std::string& bytes, Channel& channel);

}  // namespace packcheck
