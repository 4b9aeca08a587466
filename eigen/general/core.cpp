// Eigenvalues and eigenvectors of a general real matrix: balance, reduce, iterate, and for the
// vectors back-substitute, transform back, scale.
#include "eigen/cores.hpp"
#include "eigen/general/elimination.hpp"
#include "eigen/general/qr_iteration.hpp"
#include "eigen/general/quasi_triangular_vectors.hpp"
#include "eigen/shared/back_transformation.hpp"
#include "eigen/shared/balance.hpp"
#include "eigen/shared/scale_columns.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"

namespace matrix_pack {

namespace {

// Balancing ends when it has isolated row 1 and not only at row 0, where nothing is left to do.
// Kept: hosts rely on it.
constexpr int kLastRowIsolated = 1;

struct Work {
  explicit Work(int n) : wr(new_part(n, 1)), wi(new_part(n, 1)), scale(new_doubles(n)) {}
  bool complete() const { return wr && wi && scale; }

  Doubles wr;
  Doubles wi;
  Doubles scale;
  Doubles pivots;
  Array<std::ptrdiff_t> rows;
};

Parts parts_of(const aMatrix* a) {
  return {a->re, nullptr, a->leading_dimension, a->rows};
}

// Balances A and reduces it to Hessenberg form. Null or a message.
const char* reduce(const Parts& a, Work& work, Balance& b) {
  b = balance(a, kLastRowIsolated, work.scale.get());
  work.pivots = new_doubles(b.igh > 0 ? b.igh : 0);
  work.rows = new_array<std::ptrdiff_t>(std::int64_t{a.n} + 1);
  if (!work.pivots || !work.rows) return kOutOfMemory;
  eliminate_to_hessenberg(a, b, {work.pivots.get(), work.rows.get()});
  return nullptr;
}

const char* take_values(EfiCallContext* context, int n, Work& work, aMatrix** values) {
  *values = new_matrix(context, n, 1, std::move(work.wr), std::move(work.wi));
  return *values != nullptr ? nullptr : kOutOfMemory;
}

void set_identity(const Parts& z) {
  for (int j = 0; j < z.n; ++j) z.re[j * z.ld + j] = 1.0;
}

// The two columns of a complex pair are the real and the imaginary part of the first vector; the
// second is its conjugate.
void unpack_pairs(const double* wi, const Parts& v) {
  for (int j = 0; j < v.n; ++j) {
    if (!(wi[j] > 0.0)) continue;
    double* const re = v.re + j * v.ld;
    double* const im = v.im + j * v.ld;
    for (std::ptrdiff_t i = 0; i < v.n; ++i) {
      im[i] = re[v.ld + i];
      im[v.ld + i] = -im[i];
      re[v.ld + i] = re[i];
    }
  }
}

}  // namespace

const char* general_eigenvalues(EfiCallContext* context, aMatrix* matrix, aMatrix** values) {
  if (const char* message = check_copy(matrix)) return message;
  const Parts a = parts_of(matrix);
  Work work(a.n);
  if (!work.complete()) return kOutOfMemory;
  Balance b;
  if (const char* message = reduce(a, work, b)) return message;
  const double norm = hessenberg_norm(a.re, a.ld, a.n);
  if (const char* m = hessenberg_qr(a, b, norm, work.wr.get(), work.wi.get())) return m;
  return take_values(context, a.n, work, values);
}

const char* general_eigenvectors(EfiCallContext* context, aMatrix* matrix, aMatrix** values,
                                 aMatrix** vectors) {
  if (const char* message = check_copy(matrix)) return message;
  const Parts a = parts_of(matrix);
  const int n = a.n;
  Work work(n);
  Doubles re = new_zero_part(n, n);
  Doubles im = new_zero_part(n, n);
  if (!work.complete() || !re || !im) return kOutOfMemory;
  Balance b;
  if (const char* message = reduce(a, work, b)) return message;

  const Parts v = {re.get(), im.get(), n, n};
  const Parts z = {re.get(), nullptr, n, n};
  set_identity(z);
  accumulate_eliminations(a, b, work.pivots.get(), z.re, z.ld);
  const double norm = hessenberg_norm(a.re, a.ld, n);
  if (const char* m = hessenberg_qr_with_vectors(a, b, norm, work.wr.get(), work.wi.get(), z.re))
    return m;

  std::ptrdiff_t* const last = work.rows.get();
  quasi_triangular_vectors(a, work.wr.get(), work.wi.get(), kEps * norm, last);
  transform_vectors(b, a, last, z);  // A real matrix needs no memory for it.
  undo_balance(b, z);
  unpack_pairs(work.wi.get(), v);
  scale_to_largest(v);

  if (const char* message = take_values(context, n, work, values)) return message;
  *vectors = new_matrix(context, n, n, std::move(re), std::move(im));
  return *vectors != nullptr ? nullptr : kOutOfMemory;
}

}  // namespace matrix_pack
