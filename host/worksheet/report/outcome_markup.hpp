// What came of a statement, as HTML: for reports and notebooks.
#pragma once

#include <string>

#include "host/worksheet/output/display_options.hpp"
#include "host/worksheet/session/outcome.hpp"

namespace worksheet {

// The value of a statement that has not failed, under its names; help and lists as text. Empty
// where there is nothing to show.
std::string values_markup(const Outcome& outcome, const DisplayOptions& options);

}  // namespace worksheet
