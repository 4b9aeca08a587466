// What the pack is compared with.
#pragma once

#include <string>

namespace bench {

// LAPACK's and Eigen's versions and the instruction sets that they use.
std::string peers();

void use_one_thread();

}  // namespace bench
