// Eigenvalues and eigenvectors of a real symmetric matrix: reduce to tridiagonal form, iterate.
#include "eigen/cores.hpp"
#include "eigen/symmetric/ql_iteration.hpp"
#include "eigen/symmetric/tridiagonal.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"

namespace matrix_pack {

const char* symmetric_eigenvalues(EfiCallContext* context, aMatrix* a, aMatrix** values) {
  if (const char* message = check_copy(a)) return message;
  const int n = a->rows;
  Doubles d = new_part(n, 1);
  Doubles e = new_doubles(n);
  if (!d || !e) return kOutOfMemory;
  if (const char* m = tridiagonalize(a->re, a->leading_dimension, n, d.get(), e.get())) return m;
  if (const char* m = tridiagonal_ql(d.get(), e.get(), n)) return m;
  *values = new_matrix(context, n, 1, std::move(d));
  return *values != nullptr ? nullptr : kOutOfMemory;
}

const char* symmetric_eigenvectors(aMatrix* a) {
  if (const char* message = check_copy(a)) return message;
  const int n = a->rows;
  double* const z = a->re;
  const Index ld = a->leading_dimension;
  const Doubles d = new_doubles(n);
  const Doubles e = new_doubles(n);
  if (!d || !e) return kOutOfMemory;
  if (const char* m = tridiagonalize_with_vectors(z, ld, n, d.get(), e.get())) return m;
  return tridiagonal_ql_with_vectors(d.get(), e.get(), n, z, ld);
}

}  // namespace matrix_pack
