// Everything that the program says as JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "host/worksheet/session/outcome.hpp"

namespace worksheet {

class Machine;

using Json = nlohmann::ordered_json;

// The object of one statement.
Json outcome_json(const Outcome& outcome);

// The same as one line of text, without the newline; text that is no UTF-8 is mended.
std::string outcome_line(const Outcome& outcome);

// Every row of the loaded packs, an object a line: what its table and its reference say.
std::string functions_json(const Machine& machine);

// The packs of the catalogue, an object a line. Throws efi::CatalogueError.
std::string packs_json();

}  // namespace worksheet
