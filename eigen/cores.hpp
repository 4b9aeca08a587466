// The numerical cores of `eigenvals` and `eigenvecs`, one for each kind of matrix.
//
// Each works on a square working copy, which it destroys, and returns null or a message. The values
// come as a column, in the order in which the iteration leaves them on the diagonal; the vectors
// are the columns of a matrix, in the order of the values.
#pragma once

#include "pack/checks.hpp"

namespace matrix_pack {

// The checks with which every core begins. Null, or what is wrong with the copy.
inline const char* check_copy(const aMatrix* a) {
  if (a == nullptr || (a->re == nullptr && a->im == nullptr))
    return "Null matrix or vector pointer.";
  return check_square(a);
}

// A real symmetric matrix, of which only the lower triangle is used. The values are a real column.
const char* symmetric_eigenvalues(EfiCallContext* context, aMatrix* a, aMatrix** values);
// A becomes the orthogonal matrix of its eigenvectors.
const char* symmetric_eigenvectors(aMatrix* a);

// A general real matrix. Values and vectors have both part arrays; of a complex pair, the value
// with the positive imaginary part comes first.
const char* general_eigenvalues(EfiCallContext* context, aMatrix* a, aMatrix** values);
const char* general_eigenvectors(EfiCallContext* context, aMatrix* a, aMatrix** values,
                                 aMatrix** vectors);

// A complex matrix. Parts of the values that are smaller than `tolerance` become 0; the vectors
// know no tolerance. Values and vectors have both part arrays.
const char* complex_eigenvalues(EfiCallContext* context, aMatrix* a, double tolerance,
                                aMatrix** values);
const char* complex_eigenvectors(EfiCallContext* context, aMatrix* a, aMatrix** values,
                                 aMatrix** vectors);

}  // namespace matrix_pack
