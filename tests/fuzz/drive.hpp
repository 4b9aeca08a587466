// Drives fuzz targets from tests: over a shipped corpus, and over random changes of it.
#pragma once

#include <string>
#include <vector>

#include "tests/fuzz/corpus.hpp"

namespace fuzz {

using Target = std::string (*)(Bytes input);

// Expects no complaint about any input of tests/fuzz/corpus/NAME.txt.
void replay(const std::string& name, Target target);

// Expects none about random changes of those inputs and of `more`: `count` of them, or
// MATRIX_FUZZ_INPUTS, or as many as fit in MATRIX_FUZZ_SECONDS. MATRIX_FUZZ_SEED chooses others.
void try_random_inputs(const std::string& name, Target target, int count,
                       const std::vector<Input>& more = {});

}  // namespace fuzz
