#include "eigen/complex/unitary_kernels.hpp"

#include "pack/numeric/complex_arithmetic.hpp"
#include "pack/numeric/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// u^H x, rows first..end-1.
MATRIX_LANES_INLINE Complex product(std::ptrdiff_t n, const double* ur, const double* ui,
                                    const double* xr, const double* xi) {
  Vector re[kParts] = {};
  Vector im[kParts] = {};
  std::ptrdiff_t k = 0;
  for (; k + kLanes <= n; k += kLanes) {
    for (int i = 0; i < kParts; ++i) {
      const std::ptrdiff_t at = k + i * kWidth;
      const Vector a = load_vector(ur + at), b = load_vector(ui + at);
      const Vector c = load_vector(xr + at), d = load_vector(xi + at);
      re[i] += a * c + b * d;
      im[i] += a * d - b * c;
    }
  }
  double re_sums[kLanes], im_sums[kLanes];
  for (int i = 0; i < kParts; ++i) {
    store_vector(re_sums + i * kWidth, re[i]);
    store_vector(im_sums + i * kWidth, im[i]);
  }
  for (int q = 0; k < n; ++k, ++q) {
    re_sums[q] += ur[k] * xr[k] + ui[k] * xi[k];
    im_sums[q] += ur[k] * xi[k] - ui[k] * xr[k];
  }
  return {join(re_sums), join(im_sums)};
}

// x := x - f u
MATRIX_LANES_INLINE void subtract_multiple(std::ptrdiff_t n, Complex f, const double* ur,
                                           const double* ui, double* xr, double* xi) {
  over_elements(0, n, [=](std::ptrdiff_t k, auto v) {
    using V = decltype(v);
    const V a = load<V>(ur + k), b = load<V>(ui + k);
    store(xr + k, load<V>(xr + k) - (f.re * a - f.im * b));
    store(xi + k, load<V>(xi + k) - (f.re * b + f.im * a));
  });
}

// x := x - w conj(f), then y := y + x g: an update of a column that has waited, and what the column
// adds to a product. Without an update w is null, without a product y.
template <bool kUpdate, bool kProduct>
MATRIX_LANES_INLINE void update_and_add(std::ptrdiff_t n, Complex f, ComplexVector w, Complex g,
                                        ComplexVector y, double* xr, double* xi) {
  over_elements(0, n, [=](std::ptrdiff_t k, auto v) {
    using V = decltype(v);
    V a = load<V>(xr + k), b = load<V>(xi + k);
    if constexpr (kUpdate) {
      const V c = load<V>(w.re + k), d = load<V>(w.im + k);
      a -= c * f.re + d * f.im;
      b -= d * f.re - c * f.im;
      store(xr + k, a);
      store(xi + k, b);
    }
    if constexpr (kProduct) {
      store(y.re + k, load<V>(y.re + k) + (a * g.re - b * g.im));
      store(y.im + k, load<V>(y.im + k) + (a * g.im + b * g.re));
    }
  });
}

ComplexVector from(ComplexVector x, std::ptrdiff_t k) {
  return {x.re + k, x.im + k};
}

void reflect_column(const UnitaryReflection* before, const UnitaryReflection* now, std::ptrdiff_t j,
                    double* xr, double* xi) {
  const bool update = before != nullptr && j >= before->m && j < before->end;
  const Complex f = update ? Complex{before->u.re[j], before->u.im[j]} : Complex{0.0, 0.0};
  const ComplexVector w = update ? before->w : ComplexVector{};
  const std::ptrdiff_t end = update ? before->end : 0;
  if (now == nullptr) {
    if (update) update_and_add<true, false>(end, f, w, {}, {}, xr, xi);
    return;
  }
  const std::ptrdiff_t m = now->m;
  const bool add = j < now->end;
  const Complex g = add ? Complex{now->u.re[j], now->u.im[j]} : Complex{0.0, 0.0};
  // Rows above m: only the product needs them.
  if (update && add)
    update_and_add<true, true>(m, f, w, g, now->w, xr, xi);
  else if (add)
    update_and_add<false, true>(m, f, w, g, now->w, xr, xi);
  if (update) update_and_add<true, false>(end - m, f, from(w, m), {}, {}, xr + m, xi + m);
  const double* const ur = now->u.re + m;
  const double* const ui = now->u.im + m;
  const std::ptrdiff_t n = now->end - m;
  const Complex sum = product(n, ur, ui, xr + m, xi + m);
  subtract_multiple(n, {sum.re / now->h, sum.im / now->h}, ur, ui, xr + m, xi + m);
  if (add) update_and_add<false, true>(n, {}, {}, g, from(now->w, m), xr + m, xi + m);
}

void reflect(const UnitaryReflection* before, const UnitaryReflection* now, const ComplexArray& a,
             std::ptrdiff_t begin, std::ptrdiff_t end) {
  for (std::ptrdiff_t j = begin; j < end; ++j)
    reflect_column(before, now, j, a.re + j * a.ld, a.im + j * a.ld);
}

void accumulate(const ComplexArray& u, const double* h, std::ptrdiff_t first, std::ptrdiff_t count,
                std::ptrdiff_t end, const ComplexArray& z) {
  for (std::ptrdiff_t j = first; j < end; ++j) {
    double* const xr = z.re + j * z.ld;
    double* const xi = z.im + j * z.ld;
    // The column begins as a unit vector: reflections that start below row j leave it alone.
    for (std::ptrdiff_t k = j - first < count ? j - first : count - 1; k >= 0; --k) {
      if (h[k] == 0.0) continue;
      const std::ptrdiff_t m = first + k;
      const double* const ur = u.re + (m - 1) * u.ld + m;
      const double* const ui = u.im + (m - 1) * u.ld + m;
      const Complex sum = product(end - m, ur, ui, xr + m, xi + m);
      subtract_multiple(end - m, {sum.re / h[k], sum.im / h[k]}, ur, ui, xr + m, xi + m);
    }
  }
}

}  // namespace

const UnitaryKernels unitary_kernels_table = {reflect, accumulate};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
