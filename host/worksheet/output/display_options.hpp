// How values are shown to people.
#pragma once

#include "host/text/number_format.hpp"

namespace worksheet {

struct DisplayOptions {
  NumberFormat format;       // Of numbers, unless the outcome has one.
  bool colour = false;       // Terminal colours.
  bool show_source = false;  // Show the expression in front of its value.
  int most_rows = 24;        // Longer and wider matrices are elided...
  int width = 100;           // ... to lines of as many characters...
  bool all = false;          // ... unless all is wanted.
};

}  // namespace worksheet
