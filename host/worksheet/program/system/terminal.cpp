#include "host/worksheet/program/system/terminal.hpp"

#include <cstdio>
#include <string_view>

#include "host/efiutils/system/platform.hpp"
#include "host/worksheet/output/display_options.hpp"
#include "host/worksheet/program/system/process.hpp"

namespace worksheet {

void complain(std::string_view what) {
  // Without memory, and where nobody hears it, too.
  std::fprintf(stderr, "worksheet: %.*s\n", static_cast<int>(what.size()), what.data());
}

bool wants_colour() {
  return efi::environment("NO_COLOR").empty() && terminal_takes_colour();
}

int line_width() {
  return terminal_width().value_or(DisplayOptions().width);
}

}  // namespace worksheet
