// svd and svds.
#include "svd/svd.hpp"

#include <algorithm>

#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"
#include "svd/svd_core.hpp"
#include "svd/svds_core.hpp"

namespace matrix_pack {

namespace {

// A copy of A's real part in a new matrix; null without memory. (Not the host's copy: a missing
// real array becomes zeros.)
aMatrix* copy_real_part(EfiCallContext* context, const aMatrix* a) {
  Doubles re = new_part(a->rows, a->cols);
  if (!re) return nullptr;
  for (int j = 0; j < a->cols; ++j) {
    double* const column = re.get() + element_index(a->rows, 0, j);
    if (a->re != nullptr)
      std::copy_n(a->re + element_index(a->leading_dimension, 0, j), a->rows, column);
    else
      std::fill_n(column, a->rows, 0.0);
  }
  return new_matrix(context, a->rows, a->cols, std::move(re));
}

aMatrix* uninitialised(EfiCallContext* context, int rows, int cols) {
  Doubles re = new_part(rows, cols);
  return re ? new_matrix(context, rows, cols, std::move(re)) : nullptr;
}

Anyval* svd_real(EfiCallContext* context, const aMatrix* a) {
  if (is_complex(a)) return argument_error(context, 1, kMustBeReal);
  aMatrix* const u = copy_real_part(context, a);
  aMatrix* const v = u == nullptr ? nullptr : uninitialised(context, a->cols, a->cols);
  aMatrix* const s = v == nullptr ? nullptr : uninitialised(context, a->cols, 1);
  if (s == nullptr) return sError_OutOfMemory;
  if (const char* message = svd_core(u, v, s)) return call_error(context, message);
  aMatrix* joined = nullptr;
  return pack_two_rr(context, u, v, &joined) ? joined : sError_OutOfMemory;
}

Anyval* svds_real(EfiCallContext* context, aMatrix* a) {
  if (is_complex(a)) return argument_error(context, 1, kMustBeReal);
  aMatrix* copy = nullptr;
  if (const char* message = matrix_copy(context, a, &copy)) return call_error(context, message);
  if (const char* message = svds_core(copy)) return call_error(context, message);
  Doubles values = new_part(a->cols, 1);
  if (!values) return sError_OutOfMemory;
  for (int i = 0; i < a->cols; ++i) values[i] = elem_re(copy, i, i);
  return matrix_result(new_matrix(context, a->cols, 1, std::move(values)));
}

}  // namespace

Anyval* svd(EfiCallContext* context, Anyval* a) {
  return guarded(context, [=] {
    if (!is_matrix(a)) return argument_error(context, 1, kMustBeArray);
    return svd_real(context, as_matrix(a));
  });
}

Anyval* svds(EfiCallContext* context, Anyval* a) {
  return contained(context, [=] {
    if (!is_matrix(a)) return argument_error(context, 1, kMustBeArray);
    return svds_real(context, as_matrix(a));
  });
}

}  // namespace matrix_pack
