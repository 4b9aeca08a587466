// What a notebook shows of an outcome, in all the forms in which it may ask for it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/worksheet/help/help.hpp"
#include "host/worksheet/session/outcome.hpp"

namespace worksheet_kernel {

// As the terminal shows it, without colours.
std::string plain_text(const worksheet::Outcome& outcome);

// The value, help or list: text/plain, and text/html or text/markdown. Null where there is nothing
// to show.
nlohmann::json value_bundle(const worksheet::Outcome& outcome);

// A picture: image/svg+xml, and text/html for those who pass that over. `number` sets its
// identifiers apart from those of all others on the page.
nlohmann::json picture_bundle(const worksheet::Drawn& drawn, int number);

// A page of help: text/plain and text/markdown.
nlohmann::json help_bundle(const worksheet::HelpPage& page);

}  // namespace worksheet_kernel
