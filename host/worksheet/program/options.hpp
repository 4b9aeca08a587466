// The command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/audit/audit.hpp"
#include "host/worksheet/output/display_options.hpp"

namespace worksheet {

struct Options {
  std::vector<std::string> expressions;
  std::string file;
  std::string html;
  std::string load, save;  // Files of a session's variables.
  std::string sandbox;  // The directory to which the worksheet's files are confined; empty: none.
  std::vector<std::string> packs;
  std::string register_path, unregister_path;
  double timeout = 0.0;          // Seconds for a statement; 0: any number.
  std::uint64_t max_memory = 0;  // Bytes for the program; 0: any number.
  audit::Effort audit = audit::Effort::on;
  bool prompt = false;  // Wanted behind the worksheet.
  bool watch = false;
  bool json = false;
  bool all = false;
  bool list_functions = false;
  bool list_words = false;
  std::vector<std::string> functions;  // To be described; none: all are listed.
  bool list_packs = false;
  int digits = 0;                   // Significant digits of numbers; 0: as usual.
  std::vector<std::string> format;  // The words of a format, or none.
};

// The exit status of the program.
enum Status { kAllWell = 0, kSomeError = 1, kWrongUsage = 2 };

// Reads the options. Gives the status with which to end at once: help was asked for, or the usage
// is wrong; either has been said.
std::optional<Status> read_options(int argc, char** argv, Options& options);

}  // namespace worksheet
