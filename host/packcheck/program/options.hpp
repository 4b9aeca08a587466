// The command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/packcheck/checks/checks.hpp"

namespace packcheck {

// What of a pack is to be checked, and how it is told.
struct Selection {
  std::vector<std::string> checks;     // Empty: all of them.
  std::vector<std::string> functions;  // The same.
  bool json = false;
  bool list = false;

  bool takes(const Check& check) const;
  bool takes(const Target& target) const;
};

// The exit status of the program.
enum Status { kNothingFound = 0, kFound = 1, kNoPack = 2 };

// Reads the options. Gives the status with which to end at once: help was asked for, or the usage
// is wrong; either has been said.
std::optional<Status> read_options(int argc, char** argv, Options& options, Selection& selection);

}  // namespace packcheck
