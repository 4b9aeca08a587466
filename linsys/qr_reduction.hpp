// The rotations of the QR decomposition.
#pragma once

namespace matrix_pack {

// Q (m x m) and R of the m x n array r, which becomes R; false without memory. The method is that
// of linsys/qr.hpp.
bool rotate_to_triangle(int m, int n, double* r, double* q);

}  // namespace matrix_pack
