// eigenvals: the handler, the exported entry point, and the choice of the core.
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
const char* eigenvalues_core(EfiCallContext* context, aMatrix* argument, aMatrix* copy,
                             double tolerance, aMatrix** values) {
  if (is_complex(argument)) return complex_eigenvalues(context, copy, tolerance, values);
  if (symmetry(argument)) return symmetric_eigenvalues(context, copy, values);
  return general_eigenvalues(context, copy, values);
}

Anyval* eigenvals_worker(EfiCallContext* context, aMatrix* matrix, double tolerance) {
  if (matrix->rows != matrix->cols) return argument_error(context, 1, kMustBeSquare);
  // What the copy says is not looked at: the cores refuse a copy that is not there. Kept: hosts
  // rely on the message.
  aMatrix* copy = nullptr;
  (void)matrix_copy(context, matrix, &copy);
  aMatrix* values = nullptr;
  const char* message = eigenvalues_core(context, matrix, copy, tolerance, &values);
  return message == nullptr ? values : call_error(context, message);
}

}  // namespace

}  // namespace matrix_pack

using namespace matrix_pack;

Anyval* eigenvals(EfiCallContext* context, Anyval* matrix, Anyval* tolerance) {
  return guarded(context, [=] {
    if (!is_matrix(matrix)) return call_error(context, kMustBeArray);
    return eigenvals_worker(context, as_matrix(matrix), context_value(tolerance));
  });
}

Anyval* eigenvals(EfiCallContext* context, aMatrix* matrix, double tolerance) {
  return contained(context, [=] { return eigenvals_worker(context, matrix, tolerance); });
}
