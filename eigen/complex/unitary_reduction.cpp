#include "eigen/complex/unitary_reduction.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "eigen/complex/unitary_kernels.hpp"
#include "eigen/cores.hpp"
#include "eigen/shared/balance_kernels.hpp"
#include "eigen/shared/complex_roots.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
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
Complex make_reflection(const Parts& a, double scale, UnitaryReflection& r) {
  const std::ptrdiff_t count = r.end - r.m;
  const std::ptrdiff_t top = (r.m - 1) * a.ld + r.m;
  double* const re = r.u.re + r.m;
  double* const im = r.u.im + r.m;
  std::copy_n(a.re + top, count, re);
  std::copy_n(a.im + top, count, im);
  vector_kernels().divide(count, scale, re);
  vector_kernels().divide(count, scale, im);
  r.h = 0.0;
  for (std::ptrdiff_t i = count - 1; i >= 0; --i) r.h += re[i] * re[i] + im[i] * im[i];
  double g = std::sqrt(r.h);
  const double f = scaled_modulus(re[0], im[0]);
  if (f == 0.0) {
    re[0] = g;
    return {-g * scale, -g * a.im[top]};
  }
  r.h += f * g;
  g /= f;
  re[0] *= 1.0 + g;
  im[0] *= 1.0 + g;
  return {-g * a.re[top], -g * a.im[top]};
}

void put(const Parts& a, std::ptrdiff_t i, std::ptrdiff_t j, Complex z) {
  a.re[j * a.ld + i] = z.re;
  a.im[j * a.ld + i] = z.im;
}

UnitaryReflection reflection_in(double* work, std::ptrdiff_t n, int end) {
  return {0, end, 0.0, {work, work + n}, {work + 2 * n, work + 3 * n}};
}

// Reduces A. With `kept`, one for each row, column m-1 keeps the vector of reflection m. `work` has
// 8 n doubles.
void reduce(const Parts& a, const Balance& b, double* work, Kept* kept) {
  const UnitaryKernels& kernels = unitary_kernels();
  const ComplexArray array = {a.re, a.im, a.ld};
  const int end = b.igh + 1;
  UnitaryReflection now = reflection_in(work, a.n, end);
  UnitaryReflection other = reflection_in(work + std::ptrdiff_t{4} * a.n, a.n, end);
  const UnitaryReflection* before = nullptr;
  for (int m = b.low + 1; m < b.igh; ++m) {
    const std::ptrdiff_t top = (m - 1) * a.ld + m;
    if (before != nullptr) kernels.reflect(before, nullptr, array, m - 1, m);
    const double scale =
        balance_kernels().sum_magnitudes(a.re + top, a.im + top, 1, end - m, end - m);
    if (scale == 0.0) {
      if (before != nullptr) kernels.reflect(before, nullptr, array, m, end);
      before = nullptr;
      if (kept != nullptr) kept[m] = {0.0, {0.0, 0.0}};
      continue;
    }
    now.m = m;
    const Complex subdiagonal = make_reflection(a, scale, now);
    std::fill_n(now.w.re, end, 0.0);
    std::fill_n(now.w.im, end, 0.0);
    kernels.reflect(before, &now, array, m, a.n);
    vector_kernels().divide(end, now.h, now.w.re);
    vector_kernels().divide(end, now.h, now.w.im);
    put(a, m, m - 1, subdiagonal);
    if (kept != nullptr) {
      kept[m] = {now.h, subdiagonal};
      std::copy(now.u.re + m, now.u.re + end, a.re + top);
      std::copy(now.u.im + m, now.u.im + end, a.im + top);
    }
    std::swap(now, other);
    before = &other;
  }
  if (before != nullptr) kernels.reflect(before, nullptr, array, before->m, end);
}

}  // namespace

const char* reduce_unitary(const Parts& a, const Balance& b) {
  const Doubles work = new_doubles(std::int64_t{8} * a.n);
  if (!work) return kOutOfMemory;
  reduce(a, b, work.get(), nullptr);
  return nullptr;
}

const char* reduce_unitary_with_vectors(const Parts& a, const Balance& b, const Parts& z) {
  const Doubles work = new_doubles(std::int64_t{8} * a.n);
  const Array<Kept> kept = new_array<Kept>(a.n);
  if (!work || !kept) return kOutOfMemory;
  reduce(a, b, work.get(), kept.get());
  const std::ptrdiff_t first = b.low + 1;
  const std::ptrdiff_t count = std::max<std::ptrdiff_t>(b.igh - first, 0);
  Kept* const reflections = kept.get() + first;
  double* const h = work.get();
  for (std::ptrdiff_t k = 0; k < count; ++k) h[k] = reflections[k].h;
  unitary_kernels().accumulate({a.re, a.im, a.ld}, h, first, count, b.igh + 1, {z.re, z.im, z.ld});
  for (std::ptrdiff_t k = 0; k < count; ++k)
    put(a, first + k, first + k - 1, reflections[k].subdiagonal);
  return nullptr;
}

}  // namespace matrix_pack
