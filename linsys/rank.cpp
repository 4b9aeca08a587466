#include "linsys/rank.hpp"

#include <algorithm>
#include <cmath>

#include "linsys/linsys.hpp"
#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"
#include "pack/results.hpp"
#include "structural/transpose.hpp"
#include "svd/svds_core.hpp"

namespace matrix_pack {

namespace {

// How many of the values on the diagonal, the largest first, are more than rounding errors.
int count_significant(const aMatrix* values) {
  if (values->cols == 0) return 0;
  const double largest = elem_re(values, 0, 0);
  if (largest == 0.0) return 0;
  const double tol = largest * std::max(values->rows, values->cols) * kEps;
  int count = 0;
  for (int i = 0; i < values->cols; ++i)
    if (std::fabs(elem_re(values, i, i)) > tol) ++count;
  return count;
}

}  // namespace

Anyval* rank_worker(EfiCallContext* context, aMatrix* a) {
  if (is_complex(a)) return argument_error(context, 1, kMustBeReal);
  aMatrix* tall = nullptr;
  if (a->cols > a->rows) {
    Anyval* transposed = transpose_matrix(context, a);
    if (!is_matrix(transposed)) return transposed;
    tall = as_matrix(transposed);
  } else if (const char* message = matrix_copy(context, a, &tall)) {
    return call_error(context, message);
  }
  if (const char* message = svds_core(tall)) return call_error(context, message);
  return scalar_result(context, count_significant(tall));
}

Anyval* rank(EfiCallContext* context, Anyval* a) {
  return contained(context, [=] {
    if (!is_matrix(a)) return argument_error(context, 1, kMustBeArray);
    return rank_worker(context, as_matrix(a));
  });
}

}  // namespace matrix_pack
