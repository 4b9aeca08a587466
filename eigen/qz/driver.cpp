// Working storage, and the four stages.
#include "eigen/qz/driver.hpp"

#include <cmath>

#include "eigen/qz/finite_eigenvalues.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"

namespace matrix_pack {

namespace {

const char* check_shapes(const aMatrix* a, const aMatrix* b) {
  if (a->rows < 1 || a->cols < 1 || b->rows < 1 || b->cols < 1) return kInvalidDimension;
  if (a->rows != a->cols || b->rows != b->cols) return kMustBeSquare;
  if (a->rows != b->rows) return kSizeMismatch;
  return nullptr;
}

// What the stages work on, and what they find.
struct QzStorage {
  Doubles z, doubles;
  Array<Reflector2> pairs;
  Array<Reflector3> triples;
  QzPair pair;
  QzValues found;
  double* vector_work;

  Index n() const { return pair.n; }
};

bool allocate(QzStorage& s, aMatrix* a, aMatrix* b, bool with_z) {
  const std::int64_t n = a->rows;
  if (!provide_part(a, &aMatrix::re) || !provide_part(b, &aMatrix::re)) return false;
  if (with_z && !(s.z = new_zero_part(n, n))) return false;
  s.doubles = new_doubles((with_z ? 7 : 3) * n);
  s.pairs = new_array<Reflector2>(2 * n);
  s.triples = new_array<Reflector3>(n);
  if (!s.doubles || !s.pairs || !s.triples) return false;
  s.pair = {a->rows, a->re, b->re, s.z.get()};
  if (with_z)
    for (Index i = 0; i < n; ++i) s.pair.column_of_z(i)[i] = 1.0;
  double* const values = s.doubles.get();
  s.found = {values, values + n, values + 2 * n};
  s.vector_work = values + 3 * n;
  return true;
}

const char* run_stages(const QzStorage& s) {
  qz_reduce(s.pair, s.pairs.get());
  if (const char* message = qz_iterate(s.pair, s.pairs.get(), s.triples.get())) return message;
  qz_eigenvalues(s.pair, s.found);
  if (s.pair.z != nullptr) qz_vectors(s.pair, s.found, s.vector_work);
  return nullptr;
}

// What is small enough to be rounding error counts as zero.
void clear_small(const QzStorage& s) {
  const double tolerance = std::sqrt(static_cast<double>(s.n())) * kEps;
  for (double* values : {s.found.alfr, s.found.alfi, s.found.beta})
    for (Index i = 0; i < s.n(); ++i)
      if (std::fabs(values[i]) <= tolerance) values[i] = 0.0;
}

// Both drivers: vectors are wanted when `vectors` is not null.
const char* drive(EfiCallContext* context, aMatrix* a, aMatrix* b, aMatrix** values,
                  aMatrix** vectors, int* count) {
  if (const char* message = check_shapes(a, b)) return message;
  QzStorage s;
  if (!allocate(s, a, b, vectors != nullptr)) return kOutOfMemory;
  if (const char* message = run_stages(s)) return message;
  clear_small(s);
  *count = count_finite(s.pair, s.found);
  if (*count == 0) return nullptr;
  *values = finite_values(context, s.pair, s.found, *count);
  if (*values == nullptr) return kOutOfMemory;
  if (vectors == nullptr) return nullptr;
  *vectors = finite_vectors(context, s.pair, s.found, *count);
  return *vectors != nullptr ? nullptr : kOutOfMemory;
}

}  // namespace

const char* genvals_driver(EfiCallContext* context, aMatrix* a, aMatrix* b, aMatrix** values,
                           int* count) {
  return drive(context, a, b, values, nullptr, count);
}

const char* genvecs_driver(EfiCallContext* context, aMatrix* a, aMatrix* b, aMatrix** values,
                           aMatrix** vectors, int* count) {
  return drive(context, a, b, values, vectors, count);
}

}  // namespace matrix_pack
