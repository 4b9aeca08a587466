// The way of eigenvectors back from a triangular matrix to the one that it came from.
#pragma once

#include "eigen/shared/balance.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// V := Z X in place of Z, X the vectors of the triangular matrix: column j of X ends with row
// last[j]. Both are real when their imaginary parts are null. Rows low..high are sums over k =
// low..high in ascending order (for complex matrices one sum for each product of parts), the other
// rows are those of X.
//   returns  false when there is no memory
//   cost     n^3 flops (complex: 4 n^3), 24 n doubles of work (complex: 48 n)
bool transform_vectors(const Balance& b, const ConstComplexView& x, const Index* last,
                       const ComplexView& z);

}  // namespace matrix_pack
