// Outcomes for people.
#pragma once

#include <iosfwd>

#include "host/worksheet/output/display_options.hpp"
#include "host/worksheet/session/outcome.hpp"

namespace worksheet {

// Writes an outcome as lines of text; nothing if there is nothing to show.
void show_outcome(std::ostream& out, const Outcome& outcome, const DisplayOptions& options);

}  // namespace worksheet
