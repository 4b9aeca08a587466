// Matrices from files: CSV and TSV tables, and the Matrix Market exchange format.
#pragma once

#include <stdexcept>
#include <string>

#include "host/worksheet/engine/call.hpp"

namespace worksheet {

class Machine;

// Why a file gives no matrix: names the file and, where there is one, the line.
struct DataError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// `name` is as the machine's files have it. Throws DataError or FileError.
aMatrix* read_data(Machine& machine, const std::string& name);

// The same as a function of the language: read("FILE").
Value read(Machine& machine, const Call& call);

}  // namespace worksheet
