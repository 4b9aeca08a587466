// The transpose as other functions use it.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// A new cols x rows matrix with element (j, i) equal to A's (i, j), in both parts; or the host's
// value for exhausted memory. A part absent in A stays absent.
Anyval* transpose_matrix(EfiCallContext* context, const aMatrix* a);

}  // namespace matrix_pack
