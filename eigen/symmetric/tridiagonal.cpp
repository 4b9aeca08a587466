#include "eigen/symmetric/tridiagonal.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "eigen/cores.hpp"
#include "eigen/symmetric/tridiagonal_kernels.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// Reflections whose effect on the accumulated transformation is applied to a column in one visit.
constexpr int kReflectionsAtOnce = 8;

// Up to this order the work stands on the stack.
constexpr int kFewInReduction = 8;

// The rank-two update A := A - (v e^T + e v^T) of a step; none at first, and behind a step that
// needed no reflection.
struct Update {
  const double* v = nullptr;
  const double* e = nullptr;
};

// row[0..l], scaled, becomes the vector v of the reflection that clears it left of row[l].
// Returns h = v^T v / 2, of squares that are added in ascending order; the subdiagonal element goes
// to *e.
double make_reflection(double* row, int l, double scale, double* e) {
  vector_kernels().divide(l + 1, scale, row);
  double h = 0.0;
  for (int k = 0; k <= l; ++k) h += row[k] * row[k];
  const double f = row[l];
  const double g = f >= 0.0 ? -std::sqrt(h) : std::sqrt(h);
  *e = scale * g;
  row[l] = f - g;
  return h - f * g;
}

// Row i of A := v, column i := v / h, for the accumulation.
void keep_reflection(RealView a, int i, const double* v, double h) {
  double* const column = a.column(i);
  std::copy_n(v, i, column);
  vector_kernels().divide(i, h, column);
  for (int k = 0; k < i; ++k) a(i, k) = v[k];
}

// Reduces A; d[i] becomes the h of reflection i, 0 where there is none. `work` has 4 n doubles.
void reduce(int n, RealView a, double* d, double* e, double* work, bool keep) {
  const TridiagonalKernels& kernels = tridiagonal_kernels();
  double* v = work;
  double* next_v = work + n;
  double* p = work + 2 * n;
  double* next_p = work + 3 * n;
  Update update;
  for (int i = n - 1; i >= 1; --i) {
    const int l = i - 1;
    kernels.take_row(i, a, update.v, update.e, v);
    const double scale = l > 0 ? vector_kernels().sum_abs(i, v) : 0.0;
    if (scale == 0.0) {
      d[i] = 0.0;
      e[i] = v[l];
      if (update.v != nullptr)
        kernels.update_and_multiply(i, a, update.v, update.e, nullptr, nullptr);
      update = {};
      continue;
    }
    d[i] = make_reflection(v, l, scale, &e[i]);
    kernels.update_and_multiply(i, a, update.v, update.e, v, p);
    kernels.finish_update(i, d[i], v, p);
    if (keep) keep_reflection(a, i, v, d[i]);
    update = {v, p};
    std::swap(v, next_v);
    std::swap(p, next_p);
  }
  d[0] = 0.0;
  e[0] = 0.0;
}

}  // namespace

const char* tridiagonalize(int n, RealView a, double* d, double* e) {
  const Work<double, 4 * kFewInReduction> work(std::int64_t{4} * n);
  if (!work) return kOutOfMemory;
  reduce(n, a, d, e, work.get(), false);
  for (int i = 0; i < n; ++i) d[i] = a(i, i);
  return nullptr;
}

const char* tridiagonalize_with_vectors(int n, RealView a, double* d, double* e) {
  static_assert(kReflectionsAtOnce >= 4, "the reduction needs 4 n doubles");
  const Work<double, kReflectionsAtOnce * kFewInReduction> work(std::int64_t{kReflectionsAtOnce} *
                                                                n);
  if (!work) return kOutOfMemory;
  reduce(n, a, d, e, work.get(), true);
  for (int i = 0; i < n; i += kReflectionsAtOnce)
    tridiagonal_kernels().accumulate(i, std::min(kReflectionsAtOnce, n - i), a, d, work.get());
  return nullptr;
}

}  // namespace matrix_pack
