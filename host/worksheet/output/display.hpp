// Outcomes for people.
#pragma once

#include <string>

#include "host/worksheet/output/display_options.hpp"
#include "host/worksheet/session/outcome.hpp"

namespace worksheet {

// The text of an outcome, lines with their newlines; empty if there is nothing to show.
std::string outcome_text(const Outcome& outcome, const DisplayOptions& options);

}  // namespace worksheet
