// What is fuzzed. Each takes any bytes and returns what went wrong, in words; empty when all is
// well. They are driven by libFuzzer (run.sh) and, over the shipped corpus and over random changes
// of it, by the tests.
#pragma once

#include <string>

#include "tests/fuzz/byte_reader.hpp"

namespace fuzz {

// A call of any row or export on any arguments.
std::string check_handlers(Bytes input);

// The text of a worksheet, evaluated with the pack.
std::string check_worksheet(Bytes input);

// The text of a table of numbers, and of a Matrix Market file.
std::string check_table(Bytes input);
std::string check_matrix_market(Bytes input);

}  // namespace fuzz
