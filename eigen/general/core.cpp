// Eigenvalues and eigenvectors of a general real matrix: balance, reduce, iterate, and for the
// vectors back-substitute, transform back, scale.
#include <algorithm>

#include "eigen/cores.hpp"
#include "eigen/general/elimination.hpp"
#include "eigen/general/qr_iteration.hpp"
#include "eigen/general/quasi_triangular_vectors.hpp"
#include "eigen/shared/back_transformation.hpp"
#include "eigen/shared/balance.hpp"
#include "eigen/shared/scale_columns.hpp"
#include "eigen/shared/storage.hpp"
#include "pack/matrix_views.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"
#include "pack/numeric/spread_copy.hpp"

namespace matrix_pack {

namespace {

// Balancing ends when it has isolated row 1 and not only at row 0, where nothing is left to do.
// Kept: hosts rely on it.
constexpr int kLastRowIsolated = 1;

// What the elimination needs; the vectors use `rows` again.
struct EliminationStorage {
  Doubles pivots;
  Array<Index> rows;
};

// Balances A and reduces it to Hessenberg form. Null or a message.
const char* reduce(int n, RealView a, double* scale, EliminationStorage& work, Balance& b) {
  b = balance(n, {a.x, nullptr, a.ld}, kLastRowIsolated, scale);
  work.pivots = new_doubles(std::max(b.high, 0));
  work.rows = new_array<Index>(std::int64_t{n} + 1);
  if (!work.pivots || !work.rows) return kOutOfMemory;
  eliminate_to_hessenberg(a, b, {work.pivots.get(), work.rows.get()});
  return nullptr;
}

// The two columns of a complex pair are the real and the imaginary part of the first vector; the
// second is its conjugate.
void unpack_pairs(int n, const double* wi, const ComplexView& v) {
  for (int j = 0; j < n; ++j) {
    if (!(wi[j] > 0.0)) continue;
    double* const re = v.column(j).re;
    double* const im = v.column(j).im;
    for (Index i = 0; i < n; ++i) {
      im[i] = re[v.ld + i];
      im[v.ld + i] = -im[i];
      re[v.ld + i] = re[i];
    }
  }
}

}  // namespace

const char* general_eigenvalues(EfiCallContext* context, aMatrix* matrix, aMatrix** values) {
  if (const char* message = check_copy(matrix)) return message;
  SpreadCopy<RealView> copy;
  EigenStorage s;
  if (!copy.make(matrix->rows, matrix->rows, real_view(matrix)) ||
      !allocate(s, matrix->rows, false))
    return kOutOfMemory;
  const RealView a = copy.view;
  EliminationStorage work;
  Balance b;
  if (const char* message = reduce(s.n, a, s.scale.get(), work, b)) return message;
  const double norm = hessenberg_norm(s.n, a);
  if (const char* m = hessenberg_qr(b, a, norm, s.wr.get(), s.wi.get())) return m;
  return take_results(context, s, values, nullptr);
}

const char* general_eigenvectors(EfiCallContext* context, aMatrix* matrix, aMatrix** values,
                                 aMatrix** vectors) {
  if (const char* message = check_copy(matrix)) return message;
  SpreadCopy<RealView> copy;
  EigenStorage s;
  if (!copy.make(matrix->rows, matrix->rows, real_view(matrix)) || !allocate(s, matrix->rows, true))
    return kOutOfMemory;
  const RealView a = copy.view;
  EliminationStorage work;
  Balance b;
  if (const char* message = reduce(s.n, a, s.scale.get(), work, b)) return message;

  const RealView z = {s.z_re.get(), s.n};
  const ComplexView real_z = {z.x, nullptr, z.ld};
  accumulate_eliminations(a, b, work.pivots.get(), z);
  const double norm = hessenberg_norm(s.n, a);
  if (const char* m = hessenberg_qr_with_vectors(b, a, norm, s.wr.get(), s.wi.get(), z)) return m;

  Index* const last = work.rows.get();
  quasi_triangular_vectors(s.n, a, s.wr.get(), s.wi.get(), kEps * norm, last);
  if (!transform_vectors(b, {a.x, nullptr, a.ld}, last, real_z)) return kOutOfMemory;
  undo_balance(b, real_z);
  unpack_pairs(s.n, s.wi.get(), s.z());
  scale_to_largest(s.n, s.z());
  return take_results(context, s, values, vectors);
}

}  // namespace matrix_pack
