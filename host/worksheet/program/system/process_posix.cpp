#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include "fmt/format.h"
#include "host/worksheet/program/system/process.hpp"

namespace worksheet {

void guard_standard_streams() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(stream, F_GETFD) < 0)
      open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);  // Of no use: an error.
}

void limit_memory(std::uint64_t bytes) {
  const rlimit limit = {static_cast<rlim_t>(bytes), static_cast<rlim_t>(bytes)};
  if (setrlimit(RLIMIT_DATA, &limit) != 0)
    throw std::runtime_error(fmt::format("--max-memory: {}", std::strerror(errno)));
}

std::optional<int> terminal_width() {
  winsize size = {};
  const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
  return known ? std::optional<int>(size.ws_col) : std::nullopt;
}

bool terminal_takes_colour() {
  const char* const terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) && terminal != nullptr && std::string_view(terminal) != "dumb";
}

}  // namespace worksheet
