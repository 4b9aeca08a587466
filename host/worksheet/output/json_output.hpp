// Everything that the program says as JSON.
#pragma once

#include <iosfwd>
#include <string>

#include "host/worksheet/session/outcome.hpp"

namespace worksheet {

class Machine;

// Writes the object of one statement as a line. A value that takes more than kPrintedLimit is
// "elided", unless `all` is wanted. Takes next to no memory beside the value's own; a line that was
// begun is ended.
void write_outcome(std::ostream& out, const Outcome& outcome, bool all);

// Every row of the loaded packs, an object a line: what its table and its reference say.
std::string functions_json(const Machine& machine);

// The packs of the catalogue, an object a line. Throws efi::CatalogueError.
std::string packs_json();

}  // namespace worksheet
