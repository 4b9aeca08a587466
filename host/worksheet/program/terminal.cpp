#include "host/worksheet/program/terminal.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "host/worksheet/output/display_options.hpp"

namespace worksheet {

void complain(std::string_view what) {
  // Without memory, and where nobody hears it, too.
  std::fprintf(stderr, "worksheet: %.*s\n", static_cast<int>(what.size()), what.data());
}

bool wants_colour() {
  const char* const forbidden = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) && (forbidden == nullptr || *forbidden == '\0') &&
         terminal != nullptr && std::string_view(terminal) != "dumb";
}

int line_width() {
  winsize size = {};
  const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
  return known ? size.ws_col : DisplayOptions().width;
}

}  // namespace worksheet
