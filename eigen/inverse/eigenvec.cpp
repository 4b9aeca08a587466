// eigenvec: the handler, and the worker around the inverse iteration.
#include <cmath>
#include <cstring>

#include "eigen/eigen.hpp"
#include "eigen/inverse/iteration.hpp"
#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"

namespace matrix_pack {

namespace {

// Off-diagonal parts beyond this are refused: products of three of them still are in range.
constexpr double kLargestOffDiagonal = 1e104;

bool has_offdiag_beyond(const aMatrix* m, double bound) {
  for (const double* part : {m->re, m->im}) {
    if (part == nullptr) continue;
    for (int j = 0; j < m->cols; ++j)
      for (int i = 0; i < m->rows; ++i)
        if (i != j && std::fabs(part[element_index(m->leading_dimension, i, j)]) > bound)
          return true;
  }
  return false;
}

// A copy of one part of M, by columns without gaps; zeros when M has no such part.
Doubles part_copy(const aMatrix* m, const double* part) {
  const int n = m->rows;
  if (part == nullptr) return new_zero_part(n, n);
  Doubles copy = new_part(n, n);
  for (int j = 0; copy && j < n; ++j)
    std::memcpy(copy.get() + element_index(n, 0, j),
                part + element_index(m->leading_dimension, 0, j),
                static_cast<std::size_t>(n) * sizeof(double));
  return copy;
}

Anyval* eigenvec_worker(EfiCallContext* context, const aMatrix* m, const aComplex* z) {
  if (m->rows != m->cols) return argument_error(context, 1, kMustBeSquare);
  if (has_offdiag_beyond(m, kLargestOffDiagonal)) return call_error(context, kOverflow);
  const int n = m->rows;
  const Doubles a_re = part_copy(m, m->re);
  const Doubles a_im = part_copy(m, m->im);
  Doubles re = new_part(n, 1);
  Doubles im = new_part(n, 1);
  if (!a_re || !a_im || !re || !im) return sError_OutOfMemory;
  const ComplexView a = {a_re.get(), a_im.get(), n};
  switch (inverse_iteration(n, a, {z->re, z->im}, {re.get(), im.get()})) {
    case Status::done:
      return matrix_result(new_matrix(context, n, 1, std::move(re), std::move(im)));
    case Status::singular:
      return call_error(context, kSingularity);
    case Status::not_converging:
      return call_error(context, "not converging");
    default:
      return sError_OutOfMemory;
  }
}

}  // namespace

Anyval* eigenvec(EfiCallContext* context, Anyval* m, Anyval* z) {
  return contained(context, [=] {
    if (!is_matrix(m)) return argument_error(context, 1, kMustBeArray);
    if (!is_scalar(z)) return argument_error(context, 2, kNonScalar);
    return eigenvec_worker(context, as_matrix(m), as_scalar(z));
  });
}

}  // namespace matrix_pack
