// Matrices from files: tables of numbers, and the Matrix Market exchange format.
#pragma once

#include <string>

#include "host/worksheet/data/data_file.hpp"
#include "host/worksheet/engine/call.hpp"

namespace worksheet {

class Machine;

// All numbers of a file, which is named as the machine's files have it. Throws DataError or
// FileError.
aMatrix* read_data(Machine& machine, const std::string& name);

// The functions of the language: read("FILE"), read("FILE", "COLUMN", options...) and
// columns("FILE", options...). They see to units themselves.
Value read(Machine& machine, const Call& call);
Value columns(Machine& machine, const Call& call);

}  // namespace worksheet
