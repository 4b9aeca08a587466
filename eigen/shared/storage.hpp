// What the cores of general matrices, real and complex, work on and deliver.
#pragma once

#include "pack/memory.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

struct EigenStorage {
  int n = 0;
  Doubles wr, wi;      // The eigenvalues.
  Doubles scale;       // Of the balancing.
  Doubles z_re, z_im;  // n x n, for the vectors: the identity at first. Null without them.

  ComplexView z() const { return {z_re.get(), z_im.get(), n}; }
};

// False when there is no memory.
bool allocate(EigenStorage& s, int n, bool with_vectors);

// The eigenvalues, and with `vectors` the columns of Z, as new matrices with both part arrays. Null
// or "out of memory".
const char* take_results(EfiCallContext* context, EigenStorage& s, aMatrix** values,
                         aMatrix** vectors);

}  // namespace matrix_pack
