// The elements of a matrix as cores work on them.
#pragma once

#include "pack/host_interface.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// The real parts.
inline RealView real_view(const aMatrix* m) {
  return {m->re, m->leading_dimension};
}

// Both parts; either is null where the matrix lacks it.
inline ComplexView complex_view(const aMatrix* m) {
  return {m->re, m->im, m->leading_dimension};
}

}  // namespace matrix_pack
