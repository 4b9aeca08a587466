// reverse: the rows in the opposite order.
#include <algorithm>

#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"
#include "structural/structural.hpp"

namespace matrix_pack {

namespace {

// One part of A with the order of its rows reversed. `cols` is 1 for an array without columns: that
// one has no elements to read, and gives zeros.
Doubles reversed_part(const aMatrix* a, int cols, const double* part) {
  if (a->cols == 0) return new_zero_part(a->rows, cols);
  Doubles reversed = new_part(a->rows, cols);
  if (!reversed) return nullptr;
  for (int j = 0; j < cols; ++j) {
    const double* column = part + element_index(a->leading_dimension, 0, j);
    std::reverse_copy(column, column + a->rows, reversed.get() + element_index(a->rows, 0, j));
  }
  return reversed;
}

Anyval* reverse_worker(EfiCallContext* context, aMatrix* a) {
  // No elements to move: null, and a single row is its own reverse. Both kept: hosts rely on them.
  if (a->re == nullptr && a->im == nullptr) return nullptr;
  if (a->rows == 1) return a;
  const int cols = std::max(a->cols, 1);
  Doubles re;
  if (a->re != nullptr && !(re = reversed_part(a, cols, a->re))) return sError_OutOfMemory;
  Doubles im;
  if (a->im != nullptr && !(im = reversed_part(a, cols, a->im))) return sError_OutOfMemory;
  return matrix_result(new_matrix(context, a->rows, cols, std::move(re), std::move(im)));
}

}  // namespace

Anyval* reverse(EfiCallContext* context, Anyval* a) {
  return contained(context, [=] {
    if (!is_matrix(a)) return argument_error(context, 1, kMustBeArray);
    return reverse_worker(context, as_matrix(a));
  });
}

}  // namespace matrix_pack
