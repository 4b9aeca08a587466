#include "structural/transpose.hpp"

#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/transpose_kernels.hpp"
#include "pack/results.hpp"
#include "structural/structural.hpp"

namespace matrix_pack {

namespace {

Doubles transposed_part(const aMatrix* a, const double* part) {
  Doubles transposed = new_part(a->rows, a->cols);
  if (transposed)
    transpose_kernels().transpose(a->rows, a->cols, {part, a->leading_dimension},
                                  {transposed.get(), a->cols});
  return transposed;
}

}  // namespace

Anyval* transpose_matrix(EfiCallContext* context, const aMatrix* a) {
  Doubles re;
  if (a->re != nullptr && !(re = transposed_part(a, a->re))) return sError_OutOfMemory;
  Doubles im;
  if (a->im != nullptr && !(im = transposed_part(a, a->im))) return sError_OutOfMemory;
  return matrix_result(new_matrix(context, a->cols, a->rows, std::move(re), std::move(im)));
}

Anyval* transpose(EfiCallContext* context, Anyval* a) {
  return contained(context, [=] {
    if (!is_matrix(a)) return argument_error(context, 1, kMustBeArray);
    return transpose_matrix(context, as_matrix(a));
  });
}

}  // namespace matrix_pack
