// Corpora of inputs, kept as text: one input a line, bytes that are not printable written as \xHH,
// \n or \t. Lines that begin with # are comments.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/fuzz/byte_reader.hpp"

namespace fuzz {

using Input = std::vector<std::uint8_t>;

std::string escaped(Bytes input);
Input unescaped(const std::string& line);

// The inputs of a corpus file; throws std::runtime_error when it cannot be read.
std::vector<Input> read_corpus(const std::string& path);

// The examples, and the worksheets in the documents.
std::vector<Input> read_worksheets();

}  // namespace fuzz
