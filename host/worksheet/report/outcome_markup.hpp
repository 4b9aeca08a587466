// What came of a statement, as HTML: for reports and notebooks.
#pragma once

#include <string>

#include "host/worksheet/output/display_options.hpp"
#include "host/worksheet/session/outcome.hpp"

namespace worksheet {

// The value of a statement that has not failed, under its names; help and lists as text. Empty
// where there is nothing to show. The statement's own format of numbers comes before that of the
// options.
std::string values_markup(const Outcome& outcome, const DisplayOptions& options);

// What stands beside the value: how far its calls can be trusted, where that is less than well, and
// notes.
std::string remarks_markup(const Outcome& outcome);

}  // namespace worksheet
