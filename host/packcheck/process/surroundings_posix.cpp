#include <stdlib.h>

#include <csignal>
#include <stdexcept>

#include "host/packcheck/process/surroundings.hpp"

namespace packcheck {

std::filesystem::path new_directory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "packcheck-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary directory");
  return pattern;
}

void set_variable(const char* name, const std::string& value) {
  setenv(name, value.c_str(), 1);
}

void tell_of_lost_output() {
  std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace packcheck
