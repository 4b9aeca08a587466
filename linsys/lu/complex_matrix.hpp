// Complex matrices whose part arrays may be absent, for cores that need both.
#pragma once

#include "pack/host_interface.hpp"
#include "pack/numeric/split.hpp"

namespace matrix_pack {

// Creates the absent part arrays, of zeros. False without memory.
bool complete_parts(aMatrix* m);

// Removes the array when all its elements are zero.
void drop_zeros(const aMatrix* m, double** part);

inline Split split(const aMatrix* m) {
  return {m->re, m->im};
}

}  // namespace matrix_pack
