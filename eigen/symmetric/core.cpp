// Eigenvalues and eigenvectors of a real symmetric matrix: reduce to tridiagonal form, iterate.
#include "eigen/cores.hpp"
#include "eigen/symmetric/ql_iteration.hpp"
#include "eigen/symmetric/tridiagonal.hpp"
#include "pack/matrix_views.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"

namespace matrix_pack {

namespace {

// Up to this order the work stands on the stack.
constexpr int kFew = 8;

}  // namespace

const char* symmetric_eigenvalues(EfiCallContext* context, aMatrix* a, aMatrix** values) {
  if (const char* message = check_copy(a)) return message;
  const int n = a->rows;
  Doubles d = new_part(n, 1);
  const Work<double, kFew> e(n);
  if (!d || !e) return kOutOfMemory;
  if (const char* message = tridiagonalize(n, real_view(a), d.get(), e.get())) return message;
  if (const char* message = tridiagonal_ql(n, d.get(), e.get())) return message;
  *values = new_matrix(context, n, 1, std::move(d));
  return *values != nullptr ? nullptr : kOutOfMemory;
}

const char* symmetric_eigenvectors(aMatrix* a) {
  if (const char* message = check_copy(a)) return message;
  const int n = a->rows;
  const RealView z = real_view(a);
  const Work<double, 2 * kFew> work(std::int64_t{2} * n);
  if (!work) return kOutOfMemory;
  double* const d = work.get();
  double* const e = d + n;
  if (const char* message = tridiagonalize_with_vectors(n, z, d, e)) return message;
  return tridiagonal_ql_with_vectors(n, d, e, z);
}

}  // namespace matrix_pack
