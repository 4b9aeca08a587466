// Unitary reduction of a general complex matrix to upper Hessenberg form.
//
// Source: the complex counterpart of Martin and Wilkinson, "Similarity reduction of a general
// matrix to Hessenberg form" (1968), as Householder reflections.
#pragma once

#include <cstddef>

#include "eigen/shared/balance.hpp"

namespace matrix_pack {

// A becomes upper Hessenberg: rows and columns low..high, the rest stays triangular. What stands
// below the subdiagonal is of no use afterwards.
//   returns  null or "out of memory"
//   cost     40/3 n^3 flops, 8 n doubles of work
//   method   for m = low+1..high-1, u = A(m..high, m-1) / scale, scale the sum of its magnitudes,
//            h = |u|^2 summed upwards, u[m] lengthened by sqrt(h): A := (I - u u^H / h) A
//            (I - u u^H / h). The update from the right waits until the next step passes over the
//            columns
const char* reduce_unitary(const Balance& b, const ComplexView& a);

// The same; Z, the identity on entry, becomes the product Q of the reflections, so that the
// original matrix times Q is Q times the Hessenberg matrix.
//   cost     another 16/3 n^3 flops, and 4 n doubles
const char* reduce_unitary_with_vectors(const Balance& b, const ComplexView& a,
                                        const ComplexView& z);

}  // namespace matrix_pack
