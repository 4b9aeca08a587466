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
#include "eigen/shared/scale_columns.hpp"
#include "eigen/shared/storage.hpp"
#include "pack/matrix_views.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/complex_vector_kernels.hpp"
#include "pack/numeric/epsilon.hpp"
#include "pack/numeric/spread_copy.hpp"

namespace matrix_pack {

namespace {

// Balancing ends when it has isolated the first row.
constexpr int kLastRowIsolated = 0;

// The checks of a complex core. A part array that the copy lacks is made, of zeros.
const char* check_complex(aMatrix* a) {
  if (const char* message = check_copy(a)) return message;
  return provide_parts(a) ? nullptr : kOutOfMemory;
}

// Sum of the magnitudes of the parts of a triangular matrix.
double triangular_norm(int n, const ConstComplexView& h) {
  double norm = 0.0;
  for (int j = 0; j < n; ++j) norm += complex_vector_kernels().sum_magnitudes(j + 1, h.column(j));
  return norm;
}

}  // namespace

const char* complex_eigenvalues(EfiCallContext* context, aMatrix* matrix, double tolerance,
                                aMatrix** values) {
  if (const char* message = check_complex(matrix)) return message;
  SpreadCopy<ComplexView> copy;
  EigenStorage s;
  if (!copy.make(matrix->rows, matrix->rows, complex_view(matrix)) ||
      !allocate(s, matrix->rows, false))
    return kOutOfMemory;
  const ComplexView a = copy.view;
  const Balance b = balance(s.n, a, kLastRowIsolated, s.scale.get());
  if (const char* message = reduce_unitary(b, a)) return message;
  if (const char* message =
          complex_qr(b, a, tolerance, kMostSweepsForValues, s.wr.get(), s.wi.get()))
    return message;
  return take_results(context, s, values, nullptr);
}

const char* complex_eigenvectors(EfiCallContext* context, aMatrix* matrix, aMatrix** values,
                                 aMatrix** vectors) {
  if (const char* message = check_complex(matrix)) return message;
  SpreadCopy<ComplexView> copy;
  EigenStorage s;
  const Array<Index> last = new_array<Index>(matrix->rows);
  if (!copy.make(matrix->rows, matrix->rows, complex_view(matrix)) ||
      !allocate(s, matrix->rows, true) || !last)
    return kOutOfMemory;
  const ComplexView a = copy.view;

  const Balance b = balance(s.n, a, kLastRowIsolated, s.scale.get());
  if (const char* message = reduce_unitary_with_vectors(b, a, s.z())) return message;
  if (const char* message =
          complex_qr_with_vectors(b, a, kMostSweepsForVectors, s.wr.get(), s.wi.get(), s.z()))
    return message;

  const double smallest = std::numeric_limits<double>::denorm_min();
  triangular_vectors(s.n, a, std::max(kEps * triangular_norm(s.n, a), smallest), last.get());
  if (!transform_vectors(b, a, last.get(), s.z())) return kOutOfMemory;
  undo_balance(b, s.z());
  scale_to_largest(s.n, s.z());
  return take_results(context, s, values, vectors);
}

}  // namespace matrix_pack
