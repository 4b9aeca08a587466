// How values are shown to people.
#pragma once

namespace worksheet {

struct DisplayOptions {
  int digits = 6;            // Significant digits.
  bool colour = false;       // Terminal colours.
  bool show_source = false;  // Show the expression in front of its value.
  int most_rows = 24;        // Longer and wider matrices are elided...
  int width = 100;           // ... to lines of as many characters...
  bool all = false;          // ... unless all is wanted.
};

}  // namespace worksheet
