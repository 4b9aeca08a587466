// The checks of shape with which cores begin.
#pragma once

#include "pack/host_interface.hpp"
#include "pack/messages.hpp"

namespace matrix_pack {

// Null, "invalid dimension" for a matrix without rows or columns, or "must be square".
inline const char* check_square(const aMatrix* a) {
  if (a->rows < 1 || a->cols < 1) return kInvalidDimension;
  return a->rows == a->cols ? nullptr : kMustBeSquare;
}

}  // namespace matrix_pack
