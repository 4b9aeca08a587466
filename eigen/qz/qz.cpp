// The QZ drivers: working storage, the four stages, and the listing of what is finite.
#include "eigen/qz/qz.hpp"

#include <algorithm>
#include <cmath>

#include "pack/memory.hpp"

namespace matrix_pack {

namespace {

constexpr const char* kOutOfMemory = "out of memory";

const char* check_shapes(const aMatrix* a, const aMatrix* b) {
  if (a->rows < 1 || a->cols < 1 || b->rows < 1 || b->cols < 1) return "invalid dimension";
  if (a->rows != a->cols || b->rows != b->cols) return "must be square";
  if (a->rows != b->rows) return "array size mismatch";
  return nullptr;
}

// Gives a working copy without a real array one of zeros; false when there is no memory.
bool provide_real_part(aMatrix* m) {
  if (m->re == nullptr) m->re = new_zero_part(m->rows, m->cols).release();
  return m->re != nullptr;
}

// What the stages work on, and what they find.
struct QzStorage {
  Doubles z, values, work;
  QzPair pair;
  QzValues found;

  std::ptrdiff_t n() const { return pair.n; }
};

bool allocate(QzStorage& s, aMatrix* a, aMatrix* b, bool with_z) {
  const std::int64_t n = a->rows;
  if (!provide_real_part(a) || !provide_real_part(b)) return false;
  if (with_z && !(s.z = new_zero_part(n, n))) return false;
  s.values = new_doubles(3 * n);
  s.work = new_doubles(kQzWork * n);
  if (!s.values || !s.work) return false;
  s.pair = {a->rows, a->re, b->re, s.z.get()};
  if (with_z)
    for (std::ptrdiff_t i = 0; i < n; ++i) s.pair.column_of_z(i)[i] = 1.0;
  s.found = {s.values.get(), s.values.get() + n, s.values.get() + 2 * n};
  return true;
}

const char* run_stages(const QzStorage& s) {
  qz_reduce(s.pair, s.work.get());
  if (const char* message = qz_iterate(s.pair, s.work.get())) return message;
  qz_extract(s.pair, s.found);
  if (s.pair.z != nullptr) qz_vectors(s.pair, s.found, s.work.get());
  return nullptr;
}

// What is small enough to be rounding error counts as zero.
void clear_small(const QzStorage& s) {
  const double tolerance = std::sqrt(static_cast<double>(s.n())) * kQzEps;
  double* const values = s.values.get();
  for (std::ptrdiff_t i = 0; i < 3 * s.n(); ++i)
    if (std::fabs(values[i]) <= tolerance) values[i] = 0.0;
}

// Calls visit(i, column, sign) for each eigenvalue to be listed, in order: its number, and where
// its vector stands. With a sign, that is the real part, the imaginary part times the sign follows.
// Of a complex pair the first one decides for both. Infinite eigenvalues are not listed.
template <class Visit>
void for_each_listed(const QzStorage& s, const Visit& visit) {
  const QzValues& v = s.found;
  for (std::ptrdiff_t i = 0; i < s.n(); ++i) {
    if (v.beta[i] == 0.0 && (v.alfr[i] != 0.0 || v.alfi[i] != 0.0)) continue;
    if (v.alfi[i] > 0.0) {
      visit(i, i, 1);
      visit(i + 1, i, -1);
      ++i;
    } else if (v.alfi[i] < 0.0) {  // The first of the pair is real, being tiny, or infinite.
      visit(i, i - 1, -1);
    } else {
      visit(i, i, 0);
    }
  }
}

int count_listed(const QzStorage& s) {
  int count = 0;
  for_each_listed(s, [&](auto...) { ++count; });
  return count;
}

aMatrix* list_values(EfiCallContext* context, const QzStorage& s, int count) {
  Doubles re = new_zero_part(count, 1);
  Doubles im = new_zero_part(count, 1);
  if (!re || !im) return nullptr;
  const QzValues& v = s.found;
  std::size_t k = 0;
  for_each_listed(s, [&](std::ptrdiff_t i, std::ptrdiff_t, int sign) {
    if (sign != 0 || v.beta[i] != 0.0) {
      re[k] = v.alfr[i] / v.beta[i];
      im[k] = v.alfi[i] / v.beta[i];
    }
    ++k;
  });
  return new_matrix(context, count, 1, std::move(re), std::move(im));
}

// The vectors of the eigenvalues listed. There is an imaginary array when it is not zero.
aMatrix* list_vectors(EfiCallContext* context, const QzStorage& s, int count) {
  const std::ptrdiff_t n = s.n();
  bool complex = false;
  for_each_listed(s, [&](std::ptrdiff_t, std::ptrdiff_t column, int sign) {
    const double* const im = s.pair.column_of_z(column) + n;
    complex = complex || (sign != 0 && std::any_of(im, im + n, [](double x) { return x != 0.0; }));
  });
  Doubles re = new_part(n, count);
  Doubles im = complex ? new_zero_part(n, count) : nullptr;
  if (!re || (complex && !im)) return nullptr;
  double* to_re = re.get();
  double* to_im = im.get();
  for_each_listed(s, [&](std::ptrdiff_t, std::ptrdiff_t column, int sign) {
    const double* const from = s.pair.column_of_z(column);
    to_re = std::copy(from, from + n, to_re);
    if (!complex) return;
    if (sign > 0) std::copy(from + n, from + 2 * n, to_im);
    // Not the negative, which would make zeros negative too.
    if (sign < 0) std::transform(from + n, from + 2 * n, to_im, [](double x) { return 0.0 - x; });
    to_im += n;
  });
  return new_matrix(context, static_cast<int>(n), count, std::move(re), std::move(im));
}

// Both drivers: vectors are wanted when `vectors` is not null.
const char* drive(EfiCallContext* context, aMatrix* a, aMatrix* b, aMatrix** values,
                  aMatrix** vectors, int* count) {
  if (const char* message = check_shapes(a, b)) return message;
  QzStorage s;
  if (!allocate(s, a, b, vectors != nullptr)) return kOutOfMemory;
  if (const char* message = run_stages(s)) return message;
  clear_small(s);
  *count = count_listed(s);
  if (*count == 0) return nullptr;
  *values = list_values(context, s, *count);
  if (*values == nullptr) return kOutOfMemory;
  if (vectors == nullptr) return nullptr;
  *vectors = list_vectors(context, s, *count);
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
