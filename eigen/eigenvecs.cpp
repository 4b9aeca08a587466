// eigenvecs: the handler, the exported entry point, and the choice of the core. The columns are
// scaled twice: in the cores of general matrices so that the largest component is 1
// (eigen/shared/scale_columns.hpp), then here to length 1 by the host's renormalize_matrix_cols.
#include "eigen/cores.hpp"
#include "eigen/eigen.hpp"
#include "pack/elements.hpp"
#include "pack/exports.hpp"
#include "pack/frame/guard.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"

namespace matrix_pack {

namespace {

// The core is chosen by the argument, not by its copy.
const char* eigenvectors_core(EfiCallContext* context, aMatrix* argument, aMatrix* copy,
                              aMatrix** vectors) {
  aMatrix* values = nullptr;
  if (is_complex(argument)) return complex_eigenvectors(context, copy, &values, vectors);
  if (!symmetry(argument)) return general_eigenvectors(context, copy, &values, vectors);
  *vectors = copy;
  return symmetric_eigenvectors(copy);
}

Anyval* eigenvecs_worker(EfiCallContext* context, aMatrix* matrix) {
  if (matrix->rows != matrix->cols) return argument_error(context, 1, kMustBeSquare);
  aMatrix* copy = nullptr;
  if (const char* message = matrix_copy(context, matrix, &copy))
    return call_error(context, message);
  aMatrix* vectors = nullptr;
  if (const char* message = eigenvectors_core(context, matrix, copy, &vectors))
    return call_error(context, message);
  renormalize_matrix_cols(vectors);
  return vectors;
}

}  // namespace

}  // namespace matrix_pack

using namespace matrix_pack;

Anyval* eigenvecs(EfiCallContext* context, Anyval* matrix) {
  return guarded(context, [=] {
    if (!is_matrix(matrix)) return call_error(context, kMustBeArray);
    return eigenvecs_worker(context, as_matrix(matrix));
  });
}

Anyval* eigenvecs(EfiCallContext* context, aMatrix* matrix) {
  return contained(context, [=] { return eigenvecs_worker(context, matrix); });
}
