// The matrices that calls are made on: the same doubles on every machine.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/arguments/kinds.hpp"

namespace calls {

struct Sample {
  std::string name;
  aMatrix* matrix;
};

// Square and rectangular, real and complex, regular and degenerate, from 1 x 1 to 100 x 100.
std::vector<Sample> make_samples(efi::Store& store);

using arguments::make_matrix;

}  // namespace calls
