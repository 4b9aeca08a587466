// The checks of shape with which cores begin.
#pragma once

#include <cstdint>

#include "pack/host_interface.hpp"
#include "pack/messages.hpp"

namespace matrix_pack {

// Null, "invalid dimension" for a matrix without rows or columns, or "must be square".
inline const char* check_square(const aMatrix* a) {
  if (a->rows < 1 || a->cols < 1) return kInvalidDimension;
  return a->rows == a->cols ? nullptr : kMustBeSquare;
}

// Whether the extents are such as an array can have. A host's record may lie.
inline bool has_extents(const aMatrix* a) {
  return a->rows >= 0 && a->cols >= 0;
}

// Whether the part arrays, if they are as long as the record says, hold all elements.
inline bool holds_elements(const aMatrix* a) {
  return has_extents(a) && std::int64_t{a->rows} * a->cols <= a->byte_size / std::int64_t{8};
}

}  // namespace matrix_pack
