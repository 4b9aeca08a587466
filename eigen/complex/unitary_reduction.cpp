#include "eigen/complex/unitary_reduction.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "eigen/complex/unitary_kernels.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/complex_vector_kernels.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// What the accumulation needs of reflection m, besides its vector, which stands in column m-1 of A
// from row m on: its h (0: there is none), and the subdiagonal element that belongs there.
struct Kept {
  double h;
  Complex subdiagonal;
};

// The reflection that leaves only the first element of column m-1 of A, rows m..end-1. Returns
// that element.
Complex make_reflection(const ComplexView& a, double scale, UnitaryReflection& r) {
  const Index count = r.end - r.m;
  const ComplexView column = a.from(r.m, r.m - 1);
  const ComplexView u = r.u + r.m;
  std::copy_n(column.re, count, u.re);
  std::copy_n(column.im, count, u.im);
  vector_kernels().divide(count, scale, u.re);
  vector_kernels().divide(count, scale, u.im);
  r.h = 0.0;
  for (Index i = count - 1; i >= 0; --i) r.h += u.re[i] * u.re[i] + u.im[i] * u.im[i];
  double g = std::sqrt(r.h);
  const double f = scaled_modulus(u.re[0], u.im[0]);
  if (f == 0.0) {
    u.re[0] = g;
    return {-g * scale, -g * column.im[0]};
  }
  r.h += f * g;
  g /= f;
  u.re[0] *= 1.0 + g;
  u.im[0] *= 1.0 + g;
  return {-g * column.re[0], -g * column.im[0]};
}

UnitaryReflection reflection_in(double* work, Index n, int end) {
  return {0, end, 0.0, {work, work + n}, {work + 2 * n, work + 3 * n}};
}

// Reduces A. With `kept`, one for each row, column m-1 keeps the vector of reflection m. `work` has
// 8 n doubles.
void reduce(const Balance& b, const ComplexView& a, double* work, Kept* kept) {
  const UnitaryKernels& kernels = unitary_kernels();
  const int end = b.high + 1;
  UnitaryReflection now = reflection_in(work, b.n, end);
  UnitaryReflection other = reflection_in(work + Index{4} * b.n, b.n, end);
  const UnitaryReflection* before = nullptr;
  for (int m = b.low + 1; m < b.high; ++m) {
    const ComplexView column = a.from(m, m - 1);
    if (before != nullptr) kernels.reflect(before, nullptr, a, m - 1, m);
    const double scale = complex_vector_kernels().sum_magnitudes(end - m, column);
    if (scale == 0.0) {
      if (before != nullptr) kernels.reflect(before, nullptr, a, m, end);
      before = nullptr;
      if (kept != nullptr) kept[m] = {0.0, {0.0, 0.0}};
      continue;
    }
    now.m = m;
    const Complex subdiagonal = make_reflection(a, scale, now);
    std::fill_n(now.w.re, end, 0.0);
    std::fill_n(now.w.im, end, 0.0);
    kernels.reflect(before, &now, a, m, b.n);
    vector_kernels().divide(end, now.h, now.w.re);
    vector_kernels().divide(end, now.h, now.w.im);
    a.set(m, m - 1, subdiagonal);
    if (kept != nullptr) {
      kept[m] = {now.h, subdiagonal};
      std::copy(now.u.re + m, now.u.re + end, column.re);
      std::copy(now.u.im + m, now.u.im + end, column.im);
    }
    std::swap(now, other);
    before = &other;
  }
  if (before != nullptr) kernels.reflect(before, nullptr, a, before->m, end);
}

}  // namespace

const char* reduce_unitary(const Balance& b, const ComplexView& a) {
  const Doubles work = new_doubles(std::int64_t{8} * b.n);
  if (!work) return kOutOfMemory;
  reduce(b, a, work.get(), nullptr);
  return nullptr;
}

const char* reduce_unitary_with_vectors(const Balance& b, const ComplexView& a,
                                        const ComplexView& z) {
  const Doubles work = new_doubles(std::int64_t{8} * b.n);
  const Array<Kept> kept = new_array<Kept>(b.n);
  if (!work || !kept) return kOutOfMemory;
  reduce(b, a, work.get(), kept.get());
  const Index first = b.low + 1;
  const Index count = std::max<Index>(b.high - first, 0);
  Kept* const reflections = kept.get() + first;
  double* const h = work.get();
  for (Index k = 0; k < count; ++k) h[k] = reflections[k].h;
  unitary_kernels().accumulate(a, h, first, count, b.high + 1, z);
  for (Index k = 0; k < count; ++k) a.set(first + k, first + k - 1, reflections[k].subdiagonal);
  return nullptr;
}

}  // namespace matrix_pack
