// Eigenvalues and eigenvectors of a complex matrix: balance, reduce, iterate, and for the vectors
// back-substitute, transform back, scale.
#include <algorithm>
#include <limits>

#include "eigen/complex/qr_iteration.hpp"
#include "eigen/complex/triangular_vectors.hpp"
#include "eigen/complex/unitary_reduction.hpp"
#include "eigen/cores.hpp"
#include "eigen/shared/back_transformation.hpp"
#include "eigen/shared/balance.hpp"
#include "eigen/shared/balance_kernels.hpp"
#include "eigen/shared/scale_columns.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"

namespace matrix_pack {

namespace {

// Balancing ends when it has isolated the first row.
constexpr int kLastRowIsolated = 0;

struct Work {
  explicit Work(int n) : wr(new_part(n, 1)), wi(new_part(n, 1)), scale(new_doubles(n)) {}
  bool complete() const { return wr && wi && scale; }

  Doubles wr;
  Doubles wi;
  Doubles scale;
};

// The checks of a complex core. A part array that the copy lacks is made, of zeros.
const char* check_complex(aMatrix* a) {
  if (const char* message = check_copy(a)) return message;
  return provide_parts(a) ? nullptr : kOutOfMemory;
}

Parts parts_of(const aMatrix* a) {
  return {a->re, a->im, a->leading_dimension, a->rows};
}

const char* take_values(EfiCallContext* context, int n, Work& work, aMatrix** values) {
  *values = new_matrix(context, n, 1, std::move(work.wr), std::move(work.wi));
  return *values != nullptr ? nullptr : kOutOfMemory;
}

// Sum of the magnitudes of the parts of a triangular matrix.
double triangular_norm(const Parts& h) {
  double norm = 0.0;
  for (int j = 0; j < h.n; ++j)
    norm += balance_kernels().sum_magnitudes(h.re + j * h.ld, h.im + j * h.ld, 1, j + 1, j + 1);
  return norm;
}

}  // namespace

const char* complex_eigenvalues(EfiCallContext* context, aMatrix* matrix, double tolerance,
                                aMatrix** values) {
  if (const char* message = check_complex(matrix)) return message;
  const Parts a = parts_of(matrix);
  Work work(a.n);
  if (!work.complete()) return kOutOfMemory;
  const Balance b = balance(a, kLastRowIsolated, work.scale.get());
  if (const char* message = reduce_unitary(a, b)) return message;
  if (const char* message =
          complex_qr(a, b, tolerance, kMostSweepsForValues, work.wr.get(), work.wi.get()))
    return message;
  return take_values(context, a.n, work, values);
}

const char* complex_eigenvectors(EfiCallContext* context, aMatrix* matrix, aMatrix** values,
                                 aMatrix** vectors) {
  if (const char* message = check_complex(matrix)) return message;
  const Parts a = parts_of(matrix);
  const int n = a.n;
  Work work(n);
  Doubles re = new_zero_part(n, n);
  Doubles im = new_zero_part(n, n);
  const Array<std::ptrdiff_t> last = new_array<std::ptrdiff_t>(n);
  if (!work.complete() || !re || !im || !last) return kOutOfMemory;
  const Parts v = {re.get(), im.get(), n, n};
  for (int j = 0; j < n; ++j) v.re[j * v.ld + j] = 1.0;

  const Balance b = balance(a, kLastRowIsolated, work.scale.get());
  if (const char* message = reduce_unitary_with_vectors(a, b, v)) return message;
  if (const char* message =
          complex_qr_with_vectors(a, b, kMostSweepsForVectors, work.wr.get(), work.wi.get(), v))
    return message;

  const double smallest = std::numeric_limits<double>::denorm_min();
  triangular_vectors(a, std::max(kEps * triangular_norm(a), smallest), last.get());
  if (!transform_vectors(b, a, last.get(), v)) return kOutOfMemory;
  undo_balance(b, v);
  scale_to_largest(v);

  if (const char* message = take_values(context, n, work, values)) return message;
  *vectors = new_matrix(context, n, n, std::move(re), std::move(im));
  return *vectors != nullptr ? nullptr : kOutOfMemory;
}

}  // namespace matrix_pack
