// Complex vectors and matrices as pairs of arrays.
#pragma once

#include <cstddef>

namespace matrix_pack {

struct ComplexVector {
  double* re;
  double* im;
};

struct ComplexArray {
  double* re;
  double* im;
  std::ptrdiff_t ld;
};

}  // namespace matrix_pack
