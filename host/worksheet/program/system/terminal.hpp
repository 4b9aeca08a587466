// What the program knows of its terminal.
#pragma once

#include <string_view>

namespace worksheet {

// Says on standard error what is wrong.
void complain(std::string_view what);

// Whether standard output is a terminal that takes colours, and nobody forbids them.
bool wants_colour();

// The columns of the terminal; what is usual where there is none.
int line_width();

}  // namespace worksheet
