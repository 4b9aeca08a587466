// The matrices that calls are made on: the same doubles on every machine.
#pragma once

#include <string>
#include <vector>

#include "host/arguments/values.hpp"

namespace calls {

struct Sample {
  std::string name;
  aMatrix* matrix;
};

// Square and rectangular, real and complex, regular and degenerate, from 1 x 1 to 100 x 100.
std::vector<Sample> make_samples(efi::Store& store);

// One matrix of a kind that make_samples uses: "real", "complex", "definite", "deficient", ...
aMatrix* make_matrix(efi::Store& store, const std::string& kind, int rows, int cols);

}  // namespace calls
